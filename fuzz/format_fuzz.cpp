// Formats values as a script says, beside snprintf.

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>

#include "fuzz/options.h"
#include "kelvofxds/str/fxStr.h"
#include "tests/support/script.h"

namespace {

// "%", and what may stand before the letter of a conversion.
std::string conversion(Script& script) {
    std::string text = "%" + script.word(3, "-+ #0");
    if (script.below(2) != 0)
        text += std::to_string(script.below(80));
    if (script.below(3) == 0)
        text += "." + std::to_string(script.below(60));
    return text;
}

// The format is checked by the compiler where it is written, not here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

template <class Value>
std::string expected(const std::string& format, Value value) {
    char text[1000];
    const int n = std::snprintf(text, sizeof text, format.c_str(), value, value);
    require(n >= 0 && static_cast<unsigned int>(n) < sizeof text);
    return std::string(text, static_cast<unsigned int>(n));
}

// Once with each: the call with values, the call with a list, the constructor that
// cuts to 59 bytes.
void vformatted(fxStr& s, const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    s.vformat(format, values);
    va_end(values);
}

template <class Value>
void formatBoth(fxStr& s, const std::string& around, std::string letter, Script& script) {
    Value value;
    unsigned char bytes[sizeof value];
    for (unsigned char& b : bytes)
        b = static_cast<unsigned char>(script.byte());
    std::memcpy(&value, bytes, sizeof value);
    const std::string first = conversion(script) + letter;
    const std::string format = around + first + "%%" + conversion(script) + letter;
    const std::string wanted = expected(format, value);
    s.format(format.c_str(), value, value);
    require(wanted == s.c_str() && wanted.size() == s.length());
    vformatted(s, format.c_str(), value, value);
    require(wanted == s.c_str() && wanted.size() == s.length());
    if constexpr (!std::is_same_v<Value, long long>) {
        const fxStr made(value, first.c_str());
        const std::string cut = expected(first, value).substr(0, 59);
        require(cut == made.c_str() && cut.size() == made.length());
    }
}

void formatText(fxStr& s, const std::string& around, Script& script) {
    const std::string text = script.word(90, "abc%\n");
    const std::string format = around + conversion(script) + "s|" + conversion(script) + "s";
    const std::string wanted = expected(format, text.c_str());
    s.format(format.c_str(), text.c_str(), text.c_str());
    require(wanted == s.c_str() && wanted.size() == s.length());
    // Its own text.
    const std::string own = around.substr(0, 1) + s.c_str();
    s.format((around.substr(0, 1) + "%s").c_str(), s.c_str());
    require(own == s.c_str() && own.size() == s.length());
}
#pragma GCC diagnostic pop

}  // namespace

FUZZ_OPTIONS("")

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    fxStr s;
    while (!script.isOver()) {
        const std::string around = script.word(20, "ab ");
        switch (script.below(5)) {
            case 0:
                formatBoth<int>(s, around, "d", script);
                break;
            case 1:
                formatBoth<int>(s, around, "x", script);
                break;
            case 2:
                formatBoth<double>(s, around, script.below(2) != 0 ? "g" : "e", script);
                break;
            case 3:
                formatBoth<long long>(s, around, "lld", script);
                break;
            default:
                formatText(s, around, script);
                break;
        }
    }
    return 0;
}
