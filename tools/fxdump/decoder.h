// decoder.h - turns the payloads of records into fields.
#pragma once

#include "tools/fxdump/contents.h"
#include "tools/fxdump/fieldMaker.h"
#include "tools/fxdump/stream.h"
#include "tools/fxdump/typeTable.h"
#include "tools/fxdump/view.h"

namespace fxdump {

/// Stands between a parser and a view: adds the names of types to the records of
/// objects, and tells what payloads consist of.
class Decoder : public RecordSink {
public:
    explicit Decoder(View& v) : view(v), fields(v), ofTypes(v) {}

    void header(const Header& header) override;
    void record(const Record& record) override;
    void restOfName(const char* bytes, std::size_t n) override;
    void payload(const char* bytes, std::size_t n) override;
    void recordEnd() override;
    void damage(const Damage& damage) override;
    void end(std::uint64_t offset) override;
    bool hasEnough() const override { return view.hasEnough(); }

private:
    void beginContents();
    void beginPointer();
    void contentsOfType(const char* bytes, std::size_t n);
    void contents(const char* bytes, std::size_t n);

    View& view;
    Kind kind = Kind::standard;
    Record present;
    std::uint64_t at = 0;    // offset of the next byte
    std::uint32_t left = 0;  // bytes of the payload
    TypeTable types;
    Contents body;       // the one whose contents the records make up
    FieldMaker fields;   // of its contents
    FieldMaker ofTypes;  // of payloads of types in graph streams, which stand between
};

}  // namespace fxdump
