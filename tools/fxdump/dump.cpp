#include "tools/fxdump/dump.h"

#include <cstring>

#include "tools/fxdump/decoder.h"
#include "tools/fxdump/dotView.h"
#include "tools/fxdump/hexView.h"
#include "tools/fxdump/jsonView.h"
#include "tools/fxdump/listView.h"
#include "tools/fxdump/parser.h"
#include "tools/fxdump/statsView.h"
#include "tools/fxdump/verifier.h"

namespace fxdump {

namespace {
std::unique_ptr<View> makeView(Show show, Output& out) {
    switch (show) {
        case Show::list:
            return std::make_unique<ListView>(out);
        case Show::hex:
            return std::make_unique<HexView>(out);
        case Show::json:
            return std::make_unique<JsonView>(out);
        case Show::dot:
            return std::make_unique<DotView>(out);
        case Show::stats:
            return std::make_unique<StatsView>(out);
        case Show::verify:
            break;
    }
    return nullptr;
}

// A decoder that keeps the damage for the message.
class Watched : public Decoder {
public:
    using Decoder::Decoder;

    void damage(const Damage& damage) override {
        text = damage.text();
        Decoder::damage(damage);
    }

    std::string text;  // "" as long as there is none
};
}  // namespace

Dump::Dump(const Options& o, Output& to) : options(o), out(to), view(makeView(o.show, to)) {}

void Dump::finish() {
    if (view)
        view->finish();
}

Outcome Dump::verify(Source& source, const std::string& file, std::string& message) {
    Verifier verifier(out, file, options.readerWords);
    Parser(source, verifier, options.readerWords).parse();
    message = verifier.verdict();
    return message.empty() ? isSound : isDamaged;
}

Outcome Dump::show(Source& source, const std::string& file, std::string& message) {
    Outcome outcome = isSound;
    if (!view) {
        outcome = verify(source, file, message);
    } else {
        Watched decoder(*view);
        view->begin(file);
        Parser(source, decoder, options.readerWords).parse();
        view->close(source.error() != 0 ? std::strerror(source.error()) : "");
        message = decoder.text;
        outcome = message.empty() ? isSound : isDamaged;
    }
    if (source.error() != 0) {
        message = std::strerror(source.error());
        return isTrouble;
    }
    return outcome;
}

}  // namespace fxdump
