// dotView.h - the objects of a stream as a graph for Graphviz.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "tools/fxdump/output.h"
#include "tools/fxdump/view.h"

namespace fxdump {

/// Draws objects and blocks as nodes and pointers as edges. Embedded objects are
/// rows of the object that they are in; an edge to one leads to its row.
///
/// What is drawn is kept until the stream ends. Of more than can be drawn in any
/// useful way it keeps, and draws, the first part.
class DotView : public View {
public:
    explicit DotView(Output& o) : out(o) {}

    void begin(const std::string& file) override;
    void header(const Header& header) override;
    void record(const Record& record) override;
    void field(const Field& field) override;
    void recordEnd() override {}
    void damage(const Damage& damage) override;
    void end(std::uint64_t) override {}
    void close(const std::string& reason) override;
    bool hasEnough() const override { return out.failed(); }

private:
    struct Row {
        std::string text;
        std::uint32_t port;  // 0 for none
    };
    struct Node {
        std::string title;
        bool isBlock;
        std::uint64_t root;
        std::vector<Row> rows;
    };
    struct Place {
        std::size_t node;
        std::uint32_t port;
    };
    // Numbers begin again in roots that do not go on with those of the one before.
    using Number = std::pair<std::uint64_t, std::uint32_t>;
    struct Edge {
        Place from;
        Number to;
    };

    void beginNode(const Record& record);
    void embedded(const Record& record);
    void pointer(const Record& record);
    void addRow(const std::string& text, std::uint32_t port);
    bool isDrawing() const { return drawing; }
    bool hasRoom() const;
    void putNode(std::size_t i);
    void putEdges();
    std::string nameOf(const Place& place) const;

    Output& out;
    std::string fileName;
    Header head;
    bool hasHeader = false;
    bool drawing = false;         // the present contents are drawn
    std::uint64_t numbering = 0;  // of the root, or of the stream
    std::uint64_t leftOut = 0;    // objects and blocks that are not drawn
    std::string textLabel;        // of the text whose block's pointer comes next
    std::vector<Node> nodes;
    std::vector<Edge> edges;
    std::map<Number, Place> places;
    std::size_t rowCount = 0;  // of all nodes
};

}  // namespace fxdump
