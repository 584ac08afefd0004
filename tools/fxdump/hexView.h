// hexView.h - every byte of a stream with what it is.
#pragma once

#include "tools/fxdump/output.h"
#include "tools/fxdump/view.h"

namespace fxdump {

/// All bytes, up to 16 a line: offset, bytes, and what they are behind a semicolon.
class HexView : public View {
public:
    explicit HexView(Output& o) : out(o) {}

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
    void lines(const char* bytes, std::size_t n, const std::string& remark);
    void line(const char* bytes, std::size_t n, const std::string& remark);
    void elements(const Field& field);

    Output& out;
    std::string fileName;
    ByteOrder order;
    std::uint64_t at = 0;  // offset of the next byte
};

}  // namespace fxdump
