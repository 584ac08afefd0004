// fxStrStd.h - fxStr beside the standard library's strings.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#if __has_include(<version>)
#include <version>
#endif
#ifdef __cpp_lib_format
#include <format>
#endif

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxTempStr.h"

// All bytes count in what is here, NULs included, as they do in operator==.

/// The bytes of `s`; valid until `s` changes or ends, so of a string that nobody keeps within the
/// expression only. O(1).
inline std::string_view fxView(const fxStr& s) noexcept { return {s.c_str(), s.length()}; }

/// A copy as a std::string.
inline std::string fxString(const fxStr& s) { return std::string(fxView(s)); }

/// A copy of `text` as an fxStr.
inline fxStr fxStrOf(std::string_view text) {
    return text.empty() ? fxStr() : fxStr(text.data(), static_cast<unsigned int>(text.size()));
}

/// A text that somebody else keeps, in whatever class: what the functions for containers of
/// strings take. It is made without a copy of a literal, an fxStr, the result of operator|, a
/// std::string or a view, and is meant to live no longer than the call.
class fxText {
public:
    /// Up to its NUL; null is an empty text.
    fxText(const char* s) : bytes(s ? std::string_view(s) : std::string_view()) {}
    fxText(const fxStr& s) : bytes(fxView(s)), whole(&s) {}
    fxText(const fxTempStr& s) : bytes(s.c_str(), s.length()) {}
    fxText(const std::string& s) : bytes(s) {}
    fxText(std::string_view s) : bytes(s) {}

    /// The bytes.
    std::string_view view() const { return bytes; }
    /// A copy of them.
    fxStr str() const { return whole ? *whole : fxStrOf(bytes); }

private:
    std::string_view bytes;        // whoever made this keeps them
    const fxStr* whole = nullptr;  // the same
};

// Loops over the bytes: for (char& c : s). The NUL behind them is not among them, and an empty
// string has none, so the text that all empty strings share is never written to.

/// The first byte; valid until `s` changes its length.
inline char* begin(fxStr& s) { return &s[0U]; }
/// Behind the last byte.
inline char* end(fxStr& s) { return &s[0U] + s.length(); }
/// The first byte; valid until `s` changes.
inline const char* begin(const fxStr& s) { return s.c_str(); }
/// Behind the last byte.
inline const char* end(const fxStr& s) { return s.c_str() + s.length(); }

/// Whether `part` is somewhere in `s`; an empty one is. Linear in practice.
inline bool contains(const fxStr& s, const fxText& part) {
    return fxView(s).find(part.view()) != std::string_view::npos;
}
/// Whether `c` is somewhere in `s`.
inline bool contains(const fxStr& s, char c) { return fxView(s).find(c) != std::string_view::npos; }

namespace std {
/// Of all bytes, unlike fxStr::hash(), which looks at eight of them: strings that are equal have
/// equal values, others hardly ever. The value is not one to be stored.
template <>
struct hash<fxStr> {
    /// Linear.
    std::size_t operator()(const fxStr& s) const noexcept {
        return std::hash<std::string_view>()(fxView(s));
    }
};
}  // namespace std

#ifdef __cpp_lib_format
/// For std::format: "{}", and all else that texts have.
template <>
struct std::formatter<fxStr> : std::formatter<std::string_view> {
    /// Writes all bytes.
    template <class Context>
    auto format(const fxStr& s, Context& context) const {
        return std::formatter<std::string_view>::format(fxView(s), context);
    }
};
#endif

// For fmt::format where its header is included behind this one: what it looks for in the namespace
// of a type, older versions and newer ones. Without it, fmt would write a list of characters.

/// All bytes.
inline std::string_view to_string_view(const fxStr& s) noexcept { return fxView(s); }
/// The same.
inline std::string_view format_as(const fxStr& s) noexcept { return fxView(s); }

#ifdef FMT_VERSION
/// For fmt::format, if its header was included before this one.
template <>
struct fmt::formatter<fxStr> : fmt::formatter<fmt::string_view> {
    /// Writes all bytes.
    template <class Context>
    auto format(const fxStr& s, Context& context) const {
        return fmt::formatter<fmt::string_view>::format(fmt::string_view(s.c_str(), s.length()),
                                                        context);
    }
};
#endif
