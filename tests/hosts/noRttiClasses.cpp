// noRttiClasses.cpp - a host without run-time type information and without exceptions that has
// classes of its own. Exits with 0 when their objects come back.

#include <cstring>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/str/fxStr.h"
#include "tests/hosts/ownClasses.h"

#if defined(__GXX_RTTI) || defined(__cpp_exceptions)
#error "this host is meant to be compiled with -fno-rtti -fno-exceptions"
#endif

FX_DEFINE_XDR(Node, "Node", 1)
unsigned char Node::xdr(fxTranscriber& t) { return t.xdr(&value, 1) && fxXdrPointer(t, next); }

namespace {

struct Line {
    bool xdr(fxTranscriber& t) { return text.xdr(t) && t.xdr(&number, 1); }
    fxStr text;
    int number = 0;
};
bool operator<(const Line& a, const Line& b) { return a.number < b.number; }

class Shape : public fxXDRObj {
    FX_XDR_MEMBERS(Shape)
    virtual int corners() const = 0;
    fxStr name;
};
FX_DEFINE_ABSTRACT_XDR(Shape, "Shape", 1)
unsigned char Shape::xdr(fxTranscriber& t) { return name.xdr(t); }

class Polygon : public Shape {
    FX_XDR_MEMBERS(Polygon)
    int corners() const override { return static_cast<int>(lines.length()); }
    fxArrayOf<Line> lines;
    fxArrayOf<fxRef<Shape>> parts;
    Shape* outer = nullptr;
};
FX_DEFINE_XDR(Polygon, "Polygon", 1)
unsigned char Polygon::xdr(fxTranscriber& t) {
    return t.xdr(Shape_type, nullptr, static_cast<Shape*>(this)) && lines.xdr(t) && parts.xdr(t) &&
           fxXdrPointer(t, outer);
}

bool objectsComeBack() {
    Polygon polygon;
    polygon.name = "triangle";
    for (const int number : {3, 1, 2}) {
        Line line;
        line.number = number;
        polygon.lines.append(line);
    }
    polygon.lines.qsort();
    polygon.parts.append(new Polygon);
    static_cast<Polygon*>(polygon.parts[0].get())->outer = &polygon;
    const fxRef<Polygon> copy(copied(polygon));
    return copy && copy->name == "triangle" && copy->corners() == 3 && copy->lines[2].number == 3 &&
           copy->parts.length() == 1 && copy->parts[0]->count == 1 &&
           static_cast<Polygon*>(copy->parts[0].get())->outer == copy;
}

bool pointersComeBack() {
    Node node;
    node.next = &node;
    const fxRef<Node> copy(copied(node));
    return copy && copy->next == copy;
}

}  // namespace

int main() {
    if (objectsComeBack() && pointersComeBack())
        return 0;
    std::fprintf(stderr, "noRttiClasses: an object does not come back\n");
    return 1;
}
