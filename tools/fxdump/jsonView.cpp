#include "tools/fxdump/jsonView.h"

#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
using Word = fxBinaryFormat::Word;

// ", "name": value" or, as the first of an object, the same without the comma.
std::string member(const char* name, const std::string& value) {
    return std::string(", \"") + name + "\": " + value;
}

std::string member(const char* name, std::uint64_t value) {
    return member(name, std::to_string(value));
}

const char* keyOf(const Record& record, unsigned int i) {
    if (record.isRootEnd())
        return "checksum";
    switch (record.wordAt(i)) {
        case Word::number:
            return "number";
        case Word::typeNumber:
            return record.is(fxOT_Type) ? "number" : "type";
        case Word::version:
            return "version";
        case Word::size:
            return "size";
        case Word::ignored:
            break;
    }
    return "ignored";
}

// Numbers that JSON does not know are texts.
std::string jsonNumber(const std::string& value, bool isFloat) {
    return isFloat && value.find_first_of("nxf") != std::string::npos ? jsonString(value) : value;
}
}  // namespace

void JsonView::begin(const std::string& file) {
    out.put(isFirstStream ? "{\"streams\": [\n" : ",\n");
    out.put("{\"file\": " + jsonString(file));
    isFirstStream = false;
    hasRecords = false;
    isFirstRecord = true;
    isInRecord = false;
    ending.clear();
}

void JsonView::header(const Header& header) {
    order = header.order;
    out.put(member("kind", header.kind == Kind::graph ? "\"graph\"" : "\"standard\"") +
            member("writer", jsonString(header.writer())) +
            member("floats", jsonString(fxBinaryFormat::floatFormat)) +
            member("order", jsonString(order.name())));
    openRecords();
}

void JsonView::openRecords() {
    if (!hasRecords)
        out.put(", \"records\": [");
    hasRecords = true;
}

void JsonView::record(const Record& record) {
    out.put(std::string(isFirstRecord ? "\n" : ",\n") +
            "{\"offset\": " + std::to_string(record.offset) + member("tag", record.tag) +
            member("record", jsonString(record.label())));
    isFirstRecord = false;
    isInRecord = true;
    hasFields = false;
    for (unsigned int i = 0; i < record.wordCount; ++i)
        out.put(member(keyOf(record, i), record.words[i]));
    if (record.is(fxOT_Type))
        out.put(member("name", jsonString(record.name)));
    if (!record.isNameWhole)
        out.put(", \"nameIsCut\": true");
    if (record.is(fxOT_Object) && !record.typeName.empty())
        out.put(member("typeName", jsonString(record.typeName)));
    if (record.isRootEnd())
        out.put(std::string(", \"isRight\": ") +
                (record.words[0] == record.sum ? "true" : "false"));
    out.put(member("payload", record.payload));
}

void JsonView::openFields() {
    out.put(hasFields ? ",\n  " : ", \"contents\": [\n  ");
    hasFields = true;
}

// "value", "values", "text" or "hex": what can be said of the field.
std::string JsonView::valueText(const Field& field) const {
    const bool isFloat = field.form == Form::floats || field.form == Form::doubles;
    const bool isNumber = field.elementCount != 0 && sizeOf(field.form) != 1;
    if (isNumber && (!isFloat || order.knowsFloats())) {
        std::string values;
        for (std::size_t i = 0; i < field.elementCount; ++i)
            values +=
                (i == 0 ? "" : ", ") +
                jsonNumber(valueOf(field.form, field.elements + i * sizeOf(field.form), order),
                           isFloat);
        return field.isOne ? member("value", values) : member("values", "[" + values + "]");
    }
    const std::size_t size = field.form == Form::text ? sizeOfText(field) : field.size;
    if (field.form == Form::text && isUtf8(field.bytes, size))
        return member("text", jsonString(std::string(field.bytes, size)));
    return member("hex", "\"" + hexOf(field.bytes, field.size, "") + "\"");
}

void JsonView::field(const Field& field) {
    openFields();
    out.put("{\"offset\": " + std::to_string(field.offset) + member("size", field.size));
    if (*field.label != '\0')
        out.put(member("label", jsonString(field.label)));
    if (field.form == Form::name)
        out.put(", \"label\": \"more of the name\"");
    if (field.isLength)
        out.put(", \"isLength\": true");
    if (!field.isFirst)
        out.put(", \"goesOn\": true");
    out.put(valueText(field) + "}");
}

void JsonView::closeRecord() {
    if (isInRecord)
        out.put(hasFields ? "]}" : "}");
    isInRecord = false;
}

void JsonView::recordEnd() { closeRecord(); }

void JsonView::damage(const Damage& damage) {
    ending = ", \"damage\": {\"offset\": " + std::to_string(damage.offset) +
             member("place", damage.place) + member("rule", jsonString(damage.rule));
    if (!isInRecord && !damage.bytes.empty())
        ending += member("hex", "\"" + hexOf(damage.bytes.data(), damage.bytes.size(), "") + "\"");
    ending += "}";
}

void JsonView::end(std::uint64_t offset) { ending = member("size", offset); }

void JsonView::close(const std::string& reason) {
    closeRecord();
    if (hasRecords)
        out.put("]");
    out.put(ending);
    if (!reason.empty())
        out.put(member("error", jsonString(reason)));
    out.put("}");
}

void JsonView::finish() { out.put(isFirstStream ? "{\"streams\": []}\n" : "\n]}\n"); }

}  // namespace fxdump
