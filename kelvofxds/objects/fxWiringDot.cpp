// fxWiringDot.cpp - drawing the wiring of objects.

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/objects/fxChannelsInternal.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/str/fxTempStr.h"
#include "kelvofxds/values/fxConverter.h"

namespace {
const char head[] =
    "digraph wiring {\n"
    "    graph [rankdir=LR, nodesep=0.4, ranksep=1.1, pad=0.2, bgcolor=white]\n"
    "    node [shape=plain, fontname=Helvetica, fontsize=12, fontcolor=\"#1f2933\"]\n"
    "    edge [fontname=Helvetica, fontsize=10, color=\"#52606d\", arrowsize=0.7]\n";
const char table[] =
    "<table border=\"0\" cellborder=\"1\" cellspacing=\"0\" cellpadding=\"5\" "
    "color=\"#9aa5b1\">";
const char conversionStyle[] = ", color=\"#b44d12\", fontcolor=\"#b44d12\"";
const char typeColour[] = "#616e7c";

// So that the same wiring is drawn alike.
fxStrArray sorted(fxStrArray names) {
    names.qsort();
    return names;
}

// The bytes of the character at `at`: 1 to 4, or 0 where no text in UTF-8 has one
// that can be shown.
unsigned int characterLength(const char* at) {
    const auto byte = [at](unsigned int i) { return static_cast<unsigned char>(at[i]); };
    const struct {
        unsigned char mask, lead;
        unsigned int least;
    } forms[] = {{0x80, 0, 0x20}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};
    unsigned int length = 0;
    for (const auto& form : forms) {
        ++length;
        if ((byte(0) & form.mask) != form.lead)
            continue;
        unsigned int code = byte(0) & static_cast<unsigned char>(~form.mask);
        for (unsigned int i = 1; i < length; ++i) {
            if ((byte(i) & 0xC0) != 0x80)
                return 0;
            code = code << 6 | (byte(i) & 0x3F);
        }
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
        const bool isNone = code == 0x7F || code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF;
        return code < form.least || isSurrogate || isNone ? 0 : length;
    }
    return 0;
}

// `text` in a label, where an empty one has no place.
fxStr inLabel(const char* text) {
    fxStr label;
    while (*text) {
        const unsigned int length = characterLength(text);
        if (*text == '&')
            label.append("&amp;");
        else if (*text == '<')
            label.append("&lt;");
        else if (*text == '>')
            label.append("&gt;");
        else if (length != 0)
            label.append(text, length);
        else
            label.append(
                fxStr(static_cast<int>(static_cast<unsigned char>(*text)), "\\x%02X").c_str());
        text += length != 0 ? length : 1;
    }
    return label.length() == 0 ? fxStr("(empty)") : label;
}

fxStr inLabel(const fxStr& text) { return inLabel(text.c_str()); }

fxStr numbered(const char* letter, unsigned int n) {
    return letter | fxStr(static_cast<int>(n), "%u");
}

fxStr typeIn(unsigned short code, bool isLatestOnly = false) {
    return "<font color=\"" | fxStr(typeColour) | "\" point-size=\"10\">" |
           inLabel(fxChannels::typeName(code)) | (isLatestOnly ? ", latest only" : "") | "</font>";
}

// One picture. Objects are nodes n0, n1 and so on in the order of the list, their
// inputs and outputs ports i0 and o0 and so on in the order of their names; x0 and
// so on are channels of objects that are not in the list.
class Picture {
public:
    explicit Picture(std::FILE* file) : out(file), isWhole(file != nullptr), others(0) {}

    bool draw(fxObj* const* list, unsigned int n);

private:
    void put(const fxStr& text);
    void collect(fxObj* const* list, unsigned int n);
    void node(unsigned int i);
    fxStr row(fxObj& object, const fxStrArray& ins, const fxStrArray& outs, unsigned int i);
    fxStr title(unsigned int i);
    void edgesFrom(const fxObj& object);
    void edgesFromOthers(const fxObj& object);
    void edge(fxOutputChannel* from, fxInputChannel* first);
    fxStr portOf(const void* channel, const char* what, unsigned short type, bool& isOther);

    std::FILE* out;
    bool isWhole;  // until something cannot be written
    unsigned int others;
    fxVoidPtrArray objects;     // each once
    fxStrArray classes;         // of the objects
    fxIntArray numbers;         // of each class: how many objects there are, how many drawn
    fxVoidPtrDict ofClass;      // addresses of these pairs, by class
    fxStrStrDictionary places;  // of channels, by address: nodes and ports
};

bool Picture::draw(fxObj* const* list, unsigned int n) {
    if (!out || (!list && n != 0))
        return false;
    collect(list, n);
    put(head);
    for (unsigned int i = 0; i < objects.length(); ++i)
        node(i);
    for (unsigned int i = 0; i < objects.length(); ++i)
        edgesFrom(*static_cast<fxObj*>(objects[i]));
    for (unsigned int i = 0; i < objects.length(); ++i)
        edgesFromOthers(*static_cast<fxObj*>(objects[i]));
    put("}\n");
    return std::fflush(out) == 0 && isWhole;
}

void Picture::put(const fxStr& text) {
    if (isWhole)
        isWhole = std::fputs(text.c_str(), out) >= 0;
}

void Picture::collect(fxObj* const* list, unsigned int n) {
    fxVoidPtrDict seen;
    for (unsigned int i = 0; i < n; ++i) {
        fxObj* object = list[i];
        if (!object || seen.find(fxChannels::keyOf(object)))
            continue;
        seen.add(fxChannels::keyOf(object), object);
        objects.append(&object);
        classes.append(fxChannels::className(object));
    }
    numbers.resize(2 * classes.length());
    for (unsigned int i = 0; i < classes.length(); ++i) {
        void*& pair = ofClass.findCreate(classes[i]);
        if (!pair) {
            numbers[2 * i] = 0;
            numbers[2 * i + 1] = 0;
            pair = &numbers[2 * i];
        }
        ++*static_cast<int*>(pair);
    }
}

// The class; of several objects of one class, each has a number.
fxStr Picture::title(unsigned int i) {
    const fxStr name = "<b>" | inLabel(classes[i]) | "</b>";
    int* pair = static_cast<int*>(*ofClass.find(classes[i]));
    const int number = ++pair[1];
    return pair[0] == 1 ? name : fxStr(name | " " | fxStr(number, "#%d"));
}

void Picture::node(unsigned int i) {
    fxObj& object = *static_cast<fxObj*>(objects[i]);
    const fxStrArray ins = sorted(fxChannels::namesIn(fxChannels::inputsOf(object)));
    const fxStrArray outs = sorted(fxChannels::namesIn(fxChannels::outputsOf(object)));
    const bool hasBoth = ins.length() != 0 && outs.length() != 0;
    const fxStr name = numbered("n", i);
    put("    " | name | " [label=<" | table | "\n        <tr><td bgcolor=\"#dbe7f3\"" |
        (hasBoth ? " colspan=\"2\"" : "") | ">" | title(i) | "</td></tr>\n");
    for (unsigned int k = 0; k < ins.length(); ++k)
        places.add(fxChannels::keyOf(fxChannels::inNamed(object, ins[k].c_str())),
                   name | ":" | numbered("i", k) | ":w");
    for (unsigned int k = 0; k < outs.length(); ++k)
        places.add(fxChannels::keyOf(fxChannels::outNamed(object, outs[k].c_str())),
                   name | ":" | numbered("o", k) | ":e");
    for (unsigned int k = 0; k < ins.length() || k < outs.length(); ++k)
        put("        <tr>" | row(object, ins, outs, k) | "</tr>\n");
    put("        </table>>]\n");
}

fxStr Picture::row(fxObj& object, const fxStrArray& ins, const fxStrArray& outs, unsigned int i) {
    fxStr cells;
    if (i < ins.length()) {
        const fxInputChannel* in = fxChannels::inNamed(object, ins[i].c_str());
        cells = "<td align=\"left\" port=\"" | numbered("i", i) | "\">" | inLabel(ins[i]) | " " |
                typeIn(in->getType(), in->isLatestOnly()) | "</td>";
    } else if (ins.length() != 0) {
        cells = "<td></td>";
    }
    if (i < outs.length()) {
        const fxOutputChannel* output = fxChannels::outNamed(object, outs[i].c_str());
        return cells | "<td align=\"right\" port=\"" | numbered("o", i) | "\">" | inLabel(outs[i]) |
               " " | typeIn(output->getType()) | "</td>";
    }
    return outs.length() != 0 ? fxStr(cells | "<td></td>") : cells;
}

// Where an edge to or from the channel ends. A channel that is none of the
// objects' gets a node of its own.
fxStr Picture::portOf(const void* channel, const char* what, unsigned short type, bool& isOther) {
    const fxStr* known = places.find(fxChannels::keyOf(channel));
    if (!known) {
        const fxStr name = numbered("x", others++);
        put("    " | name | " [shape=box, style=\"dashed,rounded\", color=\"#9aa5b1\", label=<" |
            what | " elsewhere " | typeIn(type) | ">]\n");
        places.add(fxChannels::keyOf(channel), name);
        known = places.find(fxChannels::keyOf(channel));
    }
    isOther = isOther || (*known)[0] == 'x';
    return *known;
}

void Picture::edge(fxOutputChannel* from, fxInputChannel* first) {
    const fxInputChannel* in = first->finalChannel();
    bool isOther = false;
    const fxStr tail = portOf(from, "an output", from->getType(), isOther);
    const fxStr tip = portOf(in, "an input", in->getType(), isOther);
    fxStr conversions;
    for (const fxInputChannel* link = first; link->isLink();
         link = static_cast<const fxInputChannel*>(link->target)) {
        if (conversions.length() == 0)
            conversions = inLabel(fxChannels::typeName(link->getType()));
        conversions =
            conversions | " &#8594; " |
            inLabel(fxChannels::typeName(static_cast<const fxConverter*>(link)->getTargetType()));
    }
    fxStr style;
    if (conversions.length() != 0)
        style = " [label=< " | conversions | " >" | conversionStyle | "]";
    put("    " | tail | " -> " | tip | style | (isOther ? " [style=dashed]\n" : "\n"));
}

void Picture::edgesFrom(const fxObj& object) {
    const fxStrArray names = sorted(fxChannels::namesIn(fxChannels::outputsOf(object)));
    for (unsigned int i = 0; i < names.length(); ++i) {
        fxOutputChannel* from = fxChannels::outNamed(object, names[i].c_str());
        for (unsigned int k = 0; k < from->getNumberOfConnections(); ++k)
            edge(from, (*from)[k]);
    }
}

// Those that come from outputs of objects which are not in the list.
void Picture::edgesFromOthers(const fxObj& object) {
    const fxStrArray names = sorted(fxChannels::namesIn(fxChannels::inputsOf(object)));
    for (unsigned int i = 0; i < names.length(); ++i) {
        fxInputChannel* in = fxChannels::inNamed(object, names[i].c_str());
        for (unsigned int k = 0; in->sources && k < in->sources->length(); ++k) {
            auto* from = static_cast<fxOutputChannel*>((*in->sources)[k]);
            const fxStr* known = places.find(fxChannels::keyOf(from));
            if (!known || (*known)[0] == 'x')
                edge(from, (*from)[static_cast<unsigned int>(from->find(in))]);
        }
    }
}
}  // namespace

bool fxWriteDot(std::FILE* out, fxObj* const* objects, unsigned int n) {
    return Picture(out).draw(objects, n);
}
