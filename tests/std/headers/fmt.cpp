// Strings in fmt, whose headers are included in front of this library's or, with BEHIND, behind it.
// Where there are none, there is nothing to do.
#if __has_include(<fmt/ranges.h>)
#define FMT_HEADER_ONLY
#ifdef BEHIND
#include <kelvofxds/std.h>

#include <fmt/format.h>
#include <fmt/ranges.h>
#else
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <kelvofxds/std.h>
#endif

int main() {
    const fxStr text("ab");
    const bool right = fmt::format("{}", text) == "ab" &&
                       fmt::format("<{:>4}>", text) == "<  ab>" &&
                       fmt::format("{}", fxStrOf(std::string_view("a\0b", 3))).size() == 3 &&
                       fmt::format("{}", fxStr()).empty() &&
                       fmt::format("{}", fxMake<fxStrArray>({"a", "b"})) == "[\"a\", \"b\"]";
    return right ? 0 : 1;
}
#else
int main() {}
#endif
