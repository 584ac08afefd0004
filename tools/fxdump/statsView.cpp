#include "tools/fxdump/statsView.h"

#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
// Names of types that are counted each for itself: memory has to end somewhere.
const std::size_t mostNames = 4096;
const std::size_t columnWidth = 12;
}  // namespace

void StatsView::begin(const std::string& file) {
    fileName = file;
    head = Header();
    size = 0;
    recordTotal = 0;
    for (Count& count : byTag)
        count = Count();
    byType.clear();
    otherTypes = Count();
    body = nullptr;
    isComplete = false;
    hasHeader = false;
}

void StatsView::header(const Header& header) {
    head = header;
    size = header.size;
    hasHeader = true;
}

StatsView::Count& StatsView::countOf(const std::string& typeName) {
    const auto found = byType.find(typeName);
    if (found != byType.end())
        return found->second;
    return byType.size() < mostNames ? byType[typeName] : otherTypes;
}

// The bytes of pointers and of what continues a body count as the object's.
void StatsView::record(const Record& record) {
    const std::uint64_t bytes = std::uint64_t{record.headSize()} + record.name.size() +
                                (record.is(fxOT_Type) && record.isNameWhole) + record.payload;
    ++recordTotal;
    size += bytes;
    ++byTag[record.tag].n;
    byTag[record.tag].bytes += bytes;
    if (record.is(fxOT_Object)) {
        body = &countOf(record.typeName);
        ++body->n;
    } else if (record.isBlockBody() || record.isRootEnd()) {
        body = nullptr;
    }
    if (body && !record.is(fxOT_Type))
        body->bytes += bytes;
}

void StatsView::field(const Field& field) {
    if (field.form != Form::name)
        return;
    size += field.size;
    byTag[fxOT_Type].bytes += field.size;
}

void StatsView::damage(const Damage&) {}

void StatsView::end(std::uint64_t offset) {
    size = offset;
    isComplete = true;
}

void StatsView::line(const Count& count, const std::string& what) {
    out.put(out.painted(Paint::number, rightAligned(std::to_string(count.n), columnWidth)) +
            rightAligned(std::to_string(count.bytes), columnWidth + 2) + "  " + what + "\n");
}

void StatsView::close(const std::string&) {
    if (!hasHeader)
        return;
    const std::string name = printable(fileName.data(), fileName.size());
    std::string sizes = counted(size, "byte") + ", " + counted(recordTotal, "record");
    if (head.kind == Kind::graph)
        sizes += ", " + counted(byTag[fxBinaryFormat::rootEndTag].n, "root");
    out.put(out.painted(Paint::name, name) + ": " + head.kindName() + ", " + head.order.name() +
            ": " + sizes + (isComplete ? "" : ", up to the damage") + "\n");
    out.put(rightAligned("count", columnWidth) + rightAligned("bytes", columnWidth + 2) +
            "  record\n");
    for (unsigned int tag = 0; tag < fxBinaryFormat::graphTagCount; ++tag) {
        Record named;
        named.tag = tag;
        if (byTag[tag].n != 0)
            line(byTag[tag], named.label());
    }
    if (byType.empty())
        return;
    out.put(rightAligned("count", columnWidth) + rightAligned("bytes", columnWidth + 2) +
            "  objects of type\n");
    for (const auto& [type, count] : byType)
        line(count, type.empty() ? "(not known)" : printable(type.data(), type.size()));
    if (otherTypes.n != 0)
        line(otherTypes, "(other types)");
}

}  // namespace fxdump
