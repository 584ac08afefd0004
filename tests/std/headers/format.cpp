// std::formatter of strings; with a stand-in where the library has no <format>.
#include <kelvofxds/std.h>

int main() {
#ifdef STAND_IN
    std::formatter<fxStr> formatter;
    std::format_parse_context options;
    std::format_context context;
    formatter.parse(options);
    formatter.format(fxStrOf(std::string_view("a\0b", 3)), context);
    return context.text == std::string("a\0b", 3) ? 0 : 1;
#elif defined __cpp_lib_format
    return std::format("<{:>4}>", fxStrOf(std::string_view("a\0b", 3))) == std::string("< a\0b>", 6)
               ? 0
               : 1;
#else
#error "no <format>, and no stand-in"
#endif
}
