#include "tools/fxdump/verifier.h"

#include "tools/fxdump/text.h"

namespace fxdump {

void Verifier::header(const Header& header) {
    head = header;
    rules = head.kind == Kind::graph ? makeGraphRules(head.order) : makeStandardRules(readerWords);
}

void Verifier::judge(const std::string& rule) {
    if (rule.empty() || isBad)
        return;
    Damage found;
    found.offset = offset;
    found.place = place;
    found.rule = rule;
    damage(found);
}

void Verifier::record(const Record& record) {
    offset = record.offset;
    place = record.place;
    roots += record.isRootEnd();
    judge(rules->record(record));
}

void Verifier::payload(const char* bytes, std::size_t n) { judge(rules->payload(bytes, n)); }

void Verifier::damage(const Damage& damage) {
    isBad = true;
    wrong = damage.text();
}

void Verifier::end(std::uint64_t size) {
    const std::uint64_t records = place;
    offset = size;
    place = 0;
    judge(rules->end());
    if (isBad)
        return;
    std::string text = counted(size, "byte") + ", " + counted(records, "record");
    if (head.kind == Kind::graph) {
        text += ", " + counted(roots, "root") + ": sound";
    } else {
        const std::string obstacle = rules->obstacle();
        text += obstacle.empty() ? ": sound; the standard reader would read it"
                                 : ": sound; the standard reader would not read it: " + obstacle;
    }
    out.put(out.painted(Paint::name, printable(fileName.data(), fileName.size())) + ": " +
            head.kindName() + ", " + head.order.name() + ", " + text + "\n");
}

}  // namespace fxdump
