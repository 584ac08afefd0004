#include "tools/fxdump/dotView.h"

#include <cstring>

#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
using Word = fxBinaryFormat::Word;

const std::size_t mostNodes = 5000;
const std::size_t mostEdges = 5000;
const std::size_t mostRows = 50000;
const std::size_t mostRowsOfNode = 24;
const std::size_t mostText = 32;  // bytes
const std::size_t mostValues = 6;

// Text in a label of shape "record".
std::string inLabel(const std::string& text) {
    std::string label;
    for (const char c : text) {
        if (std::strchr("{}|<>\"\\", c) && c != '\0')
            label += '\\';
        label += c;
    }
    return label;
}

std::string numbered(std::uint32_t number) { return "#" + std::to_string(number); }
}  // namespace

void DotView::begin(const std::string& file) {
    fileName = file;
    hasHeader = false;
    drawing = false;
    numbering = 0;
    leftOut = 0;
    textLabel.clear();
    nodes.clear();
    edges.clear();
    places.clear();
    rowCount = 0;
}

void DotView::header(const Header& header) {
    head = header;
    hasHeader = true;
}

bool DotView::hasRoom() const {
    return nodes.size() < mostNodes && edges.size() < mostEdges && rowCount < mostRows;
}

void DotView::record(const Record& record) {
    if (record.placeInRoot == 1 && head.kind == Kind::graph && record.headSize() != 1)
        ++numbering;
    if (record.isBody())
        beginNode(record);
    else if (record.isRootEnd())
        drawing = false;
    if (!isDrawing() || record.isBody() || record.isRootEnd())
        return;
    switch (record.tag) {
        case fxOT_Null:
            addRow("null", 0);
            break;
        case fxOT_Embedded:
        case fxOT_OldEmbedded:
            embedded(record);
            break;
        case fxOT_Block:
        case fxOT_OldBlock:
        case fxOT_ObjectPointer:
        case fxOT_OldObject:
            pointer(record);
            break;
        default:
            break;
    }
}

void DotView::beginNode(const Record& record) {
    drawing = hasRoom();
    textLabel.clear();
    if (!drawing) {
        ++leftOut;
        return;
    }
    const std::string title =
        record.is(fxOT_Object) ? (record.typeName.empty()
                                      ? "object"
                                      : printable(record.typeName.data(), record.typeName.size())) +
                                     " " + numbered(record.number())
                               : std::string(record.label()) + " " + numbered(record.number());
    places[{numbering, record.number()}] = {nodes.size(), 0};
    nodes.push_back({title, record.isBlockBody(), record.root, {}});
}

// The row is left out where there are too many. Edges then begin at the node.
void DotView::addRow(const std::string& text, std::uint32_t port) {
    Node& node = nodes.back();
    if (node.rows.size() < mostRowsOfNode)
        node.rows.push_back({text, port});
    else if (node.rows.size() == mostRowsOfNode)
        node.rows.push_back({"...", 0});
    else
        return;
    ++rowCount;
}

void DotView::embedded(const Record& record) {
    Node& node = nodes.back();
    const bool hasRow = node.rows.size() < mostRowsOfNode;
    const auto port = hasRow ? static_cast<std::uint32_t>(node.rows.size() + 1) : 0;
    if (record.is(fxOT_Embedded))
        places[{numbering, record.number()}] = {nodes.size() - 1, port};
    addRow("embedded " + numbered(record.number()), port);
}

void DotView::pointer(const Record& record) {
    Node& node = nodes.back();
    const bool hasRow = node.rows.size() < mostRowsOfNode;
    const auto port = hasRow ? static_cast<std::uint32_t>(node.rows.size() + 1) : 0;
    if (edges.size() < mostEdges)
        edges.push_back({{nodes.size() - 1, port}, {numbering, record.number()}});
    addRow(textLabel + numbered(record.number()), port);
    textLabel.clear();
}

void DotView::field(const Field& field) {
    if (!isDrawing() || field.form == Form::name)
        return;
    const std::string label = *field.label == '\0' ? "" : std::string(field.label) + " ";
    if (field.isLength) {
        textLabel.clear();
        if (field.elementCount == 0)
            return;
        if (head.order.getLong(field.elements) == 1)
            addRow(label + "\"\"", 0);
        else if (head.kind == Kind::standard)
            textLabel = label;
        return;
    }
    const bool isBlock = nodes.back().isBlock;
    if (field.isOne || !field.isFirst || (label.empty() && !isBlock))
        return;
    const std::size_t size = sizeOfText(field);
    const bool isQuoted =
        field.form == Form::text || (field.form == Form::bytes && isText(field.bytes, size));
    if (isQuoted)
        addRow(label + quoted(field.bytes, size, mostText), 0);
    else if (field.form == Form::bytes)
        addRow(label + counted(field.size, "byte") + (field.isLast ? "" : " and more"), 0);
    else
        addRow(label + valuesOf(field, mostValues, head.order), 0);
}

void DotView::damage(const Damage&) {}

// The output.

std::string DotView::nameOf(const Place& place) const {
    const std::string node = "n" + std::to_string(place.node + 1);
    return place.port == 0 ? node : node + ":p" + std::to_string(place.port);
}

void DotView::putNode(std::size_t i) {
    const Node& node = nodes[i];
    std::string label = inLabel(node.title);
    for (const Row& row : node.rows) {
        label += "|";
        if (row.port != 0)
            label += "<p" + std::to_string(row.port) + ">";
        label += inLabel(row.text) + "\\l";
    }
    out.put("    " + nameOf({i, 0}) + " [label=\"" + label + "\"" +
            (node.isBlock ? ", style=rounded" : "") + "];\n");
}

void DotView::putEdges() {
    std::map<Number, bool> missing;
    for (const Edge& edge : edges) {
        const auto target = places.find(edge.to);
        const bool isThere = target != places.end();
        if (!isThere && leftOut != 0)
            continue;
        const std::string missed =
            "x" + std::to_string(edge.to.first) + "_" + std::to_string(edge.to.second);
        if (!isThere && missing.emplace(edge.to, true).second)
            out.put("    " + missed + " [label=\"" + numbered(edge.to.second) +
                    "\\nis missing\", shape=plaintext];\n");
        out.put("    " + nameOf(edge.from) + " -> " + (isThere ? nameOf(target->second) : missed) +
                ";\n");
    }
}

// Quoted twice: for C, of which Graphviz understands quotes and backslashes.
void DotView::close(const std::string&) {
    if (!hasHeader)
        return;
    std::string title = fileName;
    if (leftOut != 0)
        title += ", and " + std::to_string(leftOut) + " more that are not drawn";
    out.put("digraph stream {\n    rankdir=LR;\n    label=" + jsonString(title) +
            ";\n    node [shape=record, fontname=\"monospace\", fontsize=10];\n");
    for (std::size_t i = 0; i < nodes.size(); ++i)
        putNode(i);
    putEdges();
    out.put("}\n");
}

}  // namespace fxdump
