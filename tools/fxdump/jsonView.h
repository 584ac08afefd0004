// jsonView.h - streams as one JSON document.
#pragma once

#include "tools/fxdump/output.h"
#include "tools/fxdump/view.h"

namespace fxdump {

/// A document with all streams. It is well-formed whatever the bytes are, and also
/// when a stream ends early.
class JsonView : public View {
public:
    explicit JsonView(Output& o) : out(o) {}

    void begin(const std::string& file) override;
    void header(const Header& header) override;
    void record(const Record& record) override;
    void field(const Field& field) override;
    void recordEnd() override;
    void damage(const Damage& damage) override;
    void end(std::uint64_t offset) override;
    void close(const std::string& reason) override;
    void finish() override;
    bool hasEnough() const override { return out.failed(); }

private:
    void openRecords();
    void openFields();
    void closeRecord();
    std::string valueText(const Field& field) const;

    Output& out;
    ByteOrder order;
    bool isFirstStream = true;
    bool hasRecords = false;  // their list is open
    bool isFirstRecord = true;
    bool isInRecord = false;
    bool hasFields = false;  // the present record's list is open
    std::string ending;      // what a stream says at last
};

}  // namespace fxdump
