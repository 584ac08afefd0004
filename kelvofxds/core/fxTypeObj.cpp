#include "kelvofxds/core/fxTypeObj.h"

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStr.h"

// Constant-initialised: records of other files register before this file's
// own initialisers would run.
fxVoidPtrDict* fxTypeObj::knownTypes = nullptr;

fxTypeObj::fxTypeObj(const char* typeName, unsigned int typeVersion,
                     void* (*createInstance)(fxTypeObj&), void (*destroyInstance)(void*),
                     unsigned char (*xdrInstance)(void*, fxTranscriber&))
    : name(typeName),
      version(typeVersion),
      create(createInstance),
      destroy(destroyInstance),
      xdr(xdrInstance) {
    registerType(this);
}

void fxTypeObj::registerType(fxTypeObj* type) {
    FX_CHECK_NOT_NULL("fxTypeObj", type);
    FX_CHECK_THREAD("fxTypeObj");
    if (!knownTypes)
        knownTypes = fxNew<fxVoidPtrDict>(0U);
    const fxStr key(type->name);
    *static_cast<void**>(knownTypes->findCreate(&key)) = type;
}

fxTypeObj* fxTypeObj::findType(const char* name) {
    fxStr key(name);
    return findType(key);
}

fxTypeObj* fxTypeObj::findType(fxStr& name) {
    if (!knownTypes)
        return nullptr;
    void* entry = nullptr;
    void* value = knownTypes->find(&name, &entry);
    if (!value)
        return nullptr;
    // The dictionary compares up to the first NUL; a type's name has none, so
    // a name that goes on behind one is another name.
    const auto* bucket = static_cast<const fxDictBucket*>(entry);
    if (*static_cast<const fxStr*>(bucket->kvmem) != name)
        return nullptr;
    return static_cast<fxTypeObj*>(*static_cast<void**>(value));
}
