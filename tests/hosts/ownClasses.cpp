// ownClasses.cpp - a host with classes of its own, and plug-ins with more of them: one that derives
// from the host's, and one that was compiled without type information.

#include "tests/hosts/ownClasses.h"

#include <dlfcn.h>

#include <cstring>

FX_DEFINE_XDR(Node, "Node", 1)
unsigned char Node::xdr(fxTranscriber& t) { return t.xdr(&value, 1) && fxXdrPointer(t, next); }

namespace {

// The same in a stream; but the one may lead to anything.
class Holder : public fxXDRObj {
    FX_XDR_MEMBERS(Holder)
    Node* node = nullptr;
};
FX_DEFINE_XDR(Holder, "Holder", 1)
unsigned char Holder::xdr(fxTranscriber& t) { return fxXdrPointer(t, node); }

class AnyHolder : public fxXDRObj {
    FX_XDR_MEMBERS(AnyHolder)
    fxXDRObj* object = nullptr;
};
FX_DEFINE_XDR(AnyHolder, "Holder", 1)
unsigned char AnyHolder::xdr(fxTranscriber& t) { return fxXdrPointer(t, object); }

// What the function `maker` of a plug-in makes. Plug-ins stay loaded, as their records do.
fxXDRObj* madeBy(const char* plugin, const char* maker) {
    void* const library = ::dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
    void* const function = library ? ::dlsym(library, maker) : nullptr;
    if (!function) {
        std::fprintf(stderr, "ownClasses: %s\n", ::dlerror());
        return nullptr;
    }
    fxXDRObj* (*make)();
    std::memcpy(&make, &function, sizeof make);
    return make();
}

// Reads, as a Holder, what was written as an AnyHolder. The caller's.
Holder* holderOf(fxXDRObj* object) {
    fxRef<fxMemoryStream> stream(new fxMemoryStream);
    AnyHolder any;
    any.object = object;
    fxGraphWriter writer(stream.get());
    if (!writer.writeObject(&any, &any))
        return nullptr;
    fxTypeObj::registerType(&Holder_type);
    fxGraphReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
    return static_cast<Holder*>(reader.readObject(Holder_type));
}

bool readsClassesOfPlugins() {
    const fxRef<fxXDRObj> object(madeBy(DERIVED_PLUGIN, "makeDerived"));
    const fxRef<Holder> holder(object ? holderOf(object.get()) : nullptr);
    if (!holder)
        return false;
    const fxRef<Node> node(holder->node);
    return std::strcmp(node->className(), "Derived") == 0 && node->value == 5 &&
           node.get() != object.get();
}

bool refusesOtherClasses() {
    const fxRef<fxXDRObj> object(madeBy(FOREIGN_PLUGIN, "makeForeign"));
    const fxRef<Holder> holder(object ? holderOf(object.get()) : nullptr);
    return object && std::strcmp(object->className(), "Foreign") == 0 && !holder;
}

bool readsItsOwnClasses() {
    Node first, second;
    first.next = &second;
    second.next = &first;
    second.value = 9;
    const fxRef<Node> copy(copied(first));
    if (!copy)
        return false;
    const fxRef<Node> next(copy->next);
    return next && next->next == copy && next->value == 9;
}

}  // namespace

int main() {
    const struct {
        bool (*holds)();
        const char* complaint;
    } checks[] = {
        {readsItsOwnClasses, "a cyclic graph of the host's class does not come back"},
        {readsClassesOfPlugins, "an object of a plug-in's class does not come back"},
        {refusesOtherClasses, "a pointer was made to lead to an object of another class"},
    };
    int failures = 0;
    for (const auto& check : checks) {
        if (check.holds())
            continue;
        std::fprintf(stderr, "ownClasses: %s\n", check.complaint);
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}
