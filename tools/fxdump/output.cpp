#include "tools/fxdump/output.h"

namespace fxdump {

std::string Output::painted(Paint paint, const std::string& text) const {
    static const char* const codes[] = {"", "2", "1", "36", "32", "2", "1;31"};
    const char* const code = codes[static_cast<unsigned int>(paint)];
    if (!colours || *code == '\0')
        return text;
    return std::string("\033[") + code + "m" + text + "\033[0m";
}

std::string padded(const std::string& text, std::size_t width) {
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

std::string rightAligned(const std::string& text, std::size_t width) {
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

}  // namespace fxdump
