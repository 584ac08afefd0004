// listView.h - the view of a stream that fxdump shows first: a line a record.
#pragma once

#include "tools/fxdump/output.h"
#include "tools/fxdump/view.h"

namespace fxdump {

/// A line for each record, with its contents below it, shortened.
class ListView : public View {
public:
    explicit ListView(Output& o) : out(o) {}

    void begin(const std::string& file) override;
    void header(const Header& header) override;
    void record(const Record& record) override;
    void field(const Field& field) override;
    void recordEnd() override;
    void damage(const Damage& damage) override;
    void end(std::uint64_t offset) override;
    void close(const std::string& reason) override;
    bool hasEnough() const override { return out.failed(); }

private:
    void recordLine(std::uint64_t offset, const std::string& name, const std::string& rest);
    void add(const std::string& label, Paint paint, const std::string& value);
    void addBytes(const Field& field);
    void addLength(const Field& field);
    void flushLine();

    Output& out;
    std::string fileName;
    Kind kind = Kind::standard;
    ByteOrder order;
    std::string line;       // of contents that is being made
    std::size_t width = 0;  // of it on the screen
};

}  // namespace fxdump
