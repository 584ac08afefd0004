// statsView.h - how many records of which kind and type a stream has.
#pragma once

#include <map>

#include "tools/fxdump/output.h"
#include "tools/fxdump/view.h"

namespace fxdump {

/// Counts records by tag and objects by type, and the bytes of both.
class StatsView : public View {
public:
    explicit StatsView(Output& o) : out(o) {}

    void begin(const std::string& file) override;
    void header(const Header& header) override;
    void record(const Record& record) override;
    void field(const Field& field) override;
    void recordEnd() override {}
    void damage(const Damage& damage) override;
    void end(std::uint64_t offset) override;
    void close(const std::string& reason) override;

private:
    struct Count {
        std::uint64_t n = 0;
        std::uint64_t bytes = 0;
    };

    Count& countOf(const std::string& typeName);
    void line(const Count& count, const std::string& what);

    Output& out;
    std::string fileName;
    Header head;
    std::uint64_t size = 0;  // bytes of the stream, as far as it was read
    std::uint64_t recordTotal = 0;
    Count byTag[fxBinaryFormat::graphTagCount];
    std::map<std::string, Count> byType;
    Count otherTypes;
    Count* body = nullptr;  // what the present contents belong to; null for nothing
    bool isComplete = false;
    bool hasHeader = false;
};

}  // namespace fxdump
