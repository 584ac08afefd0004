#include "kelvofxds/transcribe/fxXDRMembers.h"

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/transcribe/fxContentsInternal.h"

namespace {

// Writes nothing: looks at the pointers that an object hands over.
class NewObjectCheck : public fxTranscriber {
public:
    explicit NewObjectCheck(const char* nameOfClass) : name(nameOfClass) {
        fxContents::setGraphs(*this);
    }

    void reset() override {}
    unsigned char xdr(char*, unsigned int) override { return 1; }
    unsigned char xdr(unsigned char*, unsigned int) override { return 1; }
    unsigned char xdr(short*, unsigned int) override { return 1; }
    unsigned char xdr(unsigned short*, unsigned int) override { return 1; }
    unsigned char xdr(long*, unsigned int) override { return 1; }
    unsigned char xdr(unsigned long*, unsigned int) override { return 1; }
    unsigned char xdr(float*, unsigned int) override { return 1; }
    unsigned char xdr(double*, unsigned int) override { return 1; }
    unsigned char xdr(fxStr*, unsigned int) override { return 1; }

    unsigned char xdr(char** block, unsigned int) override {
        return isStringBuffer() ? 1 : pointer(*block);
    }
    unsigned char xdr(unsigned char** block, unsigned int) override { return pointer(*block); }
    unsigned char xdr(short** block, unsigned int) override { return pointer(*block); }
    unsigned char xdr(unsigned short** block, unsigned int) override { return pointer(*block); }
    unsigned char xdr(long** block, unsigned int) override { return pointer(*block); }
    unsigned char xdr(unsigned long** block, unsigned int) override { return pointer(*block); }
    unsigned char xdr(float** block, unsigned int) override { return pointer(*block); }
    unsigned char xdr(double** block, unsigned int) override { return pointer(*block); }
    unsigned char xdr(char** text) override { return pointer(*text); }
    unsigned char xdr(unsigned char** text) override { return pointer(*text); }
    unsigned char xdr(void*, fxXDRObj* object, fxTypeObj&, fxXDRObj*, void*) override {
        return pointer(object);
    }

    unsigned char xdr(fxTypeObj& type, void* previous, void* address) override {
        return previous == address ? 1 : contents(type, address);
    }
    using fxTranscriber::xdr;

    void* readObject(fxTypeObj&) override { return nullptr; }
    unsigned char writeObject(void*, fxXDRObj*) override { return 0; }
    const char* className() const override { return "NewObjectCheck"; }

    unsigned char contents(fxTypeObj& type, void* object) {
        return fxContents::withVersion(*this, type.version,
                                       [&] { return type.xdr(object, *this); });
    }

private:
    unsigned char pointer(const void* target) const {
        if (target)
            fxFatal("%s: a pointer is not null in a new object", name);
        return 1;
    }

    const char* name;
};

}  // namespace

void fxCheckNewObject(fxTypeObj& type, void* object, const fxXDRObj* base) {
    if (static_cast<const void*>(base) != object)
        fxFatal("%s: fxXDRObj is not at the start of the object", type.name);
    NewObjectCheck check(type.name);
    check.contents(type, object);
}
