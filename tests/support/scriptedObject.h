// scriptedObject.h - transcribable objects whose contents a test decides.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// An object that transcribes what its script says. It owns nothing that its
/// pointers lead to.
class ScriptedObject : public fxXDRObj {
public:
    using Script = std::function<unsigned char(ScriptedObject& self, fxTranscriber& t)>;

    explicit ScriptedObject(fxTypeObj& typeRecord, Script s = Script())
        : script(std::move(s)), type(&typeRecord) {}

    unsigned char xdr(fxTranscriber& t) override { return script ? script(*this, t) : 1; }
    fxTypeObj& getTypeObj() const override { return *type; }

    static void* newInstance(fxTypeObj& typeRecord);
    static void deleteInstance(void* object) { delete static_cast<ScriptedObject*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<ScriptedObject*>(object)->xdr(t);
    }

    /// Transcribes the pointer member `links[i]`.
    unsigned char xdrLink(fxTranscriber& t, unsigned int i);

    long numbers[4] = {0, 0, 0, 0};
    char* blocks[4] = {nullptr, nullptr, nullptr, nullptr};
    ScriptedObject* links[4] = {nullptr, nullptr, nullptr, nullptr};
    fxStr text;
    Script script;
    fxTypeObj* type;
};

/// While it lives, objects that a reader makes run `script`; it deletes them.
class ReadScript {
public:
    explicit ReadScript(ScriptedObject::Script s) {
        script() = std::move(s);
        made().clear();
    }
    ReadScript(const ReadScript&) = delete;
    ReadScript& operator=(const ReadScript&) = delete;
    ~ReadScript() {
        script() = ScriptedObject::Script();
        for (ScriptedObject* object : made())
            delete object;
        made().clear();
    }

    static ScriptedObject::Script& script() {
        static ScriptedObject::Script theScript;
        return theScript;
    }
    /// The objects made so far, in order.
    static std::vector<ScriptedObject*>& made() {
        static std::vector<ScriptedObject*> objects;
        return objects;
    }
};

inline void* ScriptedObject::newInstance(fxTypeObj& typeRecord) {
    ReadScript::made().push_back(new ScriptedObject(typeRecord, ReadScript::script()));
    return ReadScript::made().back();
}

inline void* makeNothing(fxTypeObj&) { return nullptr; }

/// Two types of version 1, one of version 2, one that is abstract and one
/// whose create function makes nothing.
inline fxTypeObj objType("Obj", 1, ScriptedObject::newInstance, ScriptedObject::deleteInstance,
                         ScriptedObject::xdr);
inline fxTypeObj subType("Sub", 1, ScriptedObject::newInstance, ScriptedObject::deleteInstance,
                         ScriptedObject::xdr);
inline fxTypeObj twoType("Two", 2, ScriptedObject::newInstance, ScriptedObject::deleteInstance,
                         ScriptedObject::xdr);
inline fxTypeObj abstractType("Abstract", 1, nullptr, nullptr, ScriptedObject::xdr);
inline fxTypeObj barrenType("Barren", 1, makeNothing, ScriptedObject::deleteInstance,
                            ScriptedObject::xdr);

inline unsigned char ScriptedObject::xdrLink(fxTranscriber& t, unsigned int i) {
    return t.xdr(&links[i], links[i], objType, this, nullptr);
}
