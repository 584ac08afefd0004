// jsonCheck.h - whether a text is a JSON document.
#pragma once

#include <cctype>
#include <cstring>
#include <string>

/// Checks by the grammar of RFC 8259, and that the text is UTF-8.
class JsonCheck {
public:
    static bool isDocument(const std::string& text) {
        JsonCheck check(text);
        if (!check.value())
            return false;
        check.blanks();
        return *check.at == '\0' && check.at == text.c_str() + text.size();
    }

private:
    explicit JsonCheck(const std::string& text) : at(text.c_str()) {}

    void blanks() { at += std::strspn(at, " \t\r\n"); }
    bool take(char c) {
        blanks();
        if (*at != c)
            return false;
        ++at;
        return true;
    }
    bool word(const char* wanted) {
        const std::size_t n = std::strlen(wanted);
        if (std::strncmp(at, wanted, n) != 0)
            return false;
        at += n;
        return true;
    }

    bool value() {
        blanks();
        switch (*at) {
            case '{':
                return list('{', '}', true);
            case '[':
                return list('[', ']', false);
            case '"':
                return string();
            case 't':
                return word("true");
            case 'f':
                return word("false");
            case 'n':
                return word("null");
            default:
                return number();
        }
    }

    bool list(char open, char close, bool hasNames) {
        if (!take(open))
            return false;
        if (take(close))
            return true;
        do {
            blanks();
            if ((hasNames && !(string() && take(':'))) || !value())
                return false;
        } while (take(','));
        return take(close);
    }

    bool digits() {
        const char* const before = at;
        while (std::isdigit(static_cast<unsigned char>(*at)))
            ++at;
        return at != before;
    }
    bool number() {
        if (*at == '-')
            ++at;
        if (*at == '0')
            ++at;
        else if (!digits())
            return false;
        if (*at == '.' && !(++at, digits()))
            return false;
        if (*at == 'e' || *at == 'E') {
            ++at;
            if (*at == '+' || *at == '-')
                ++at;
            return digits();
        }
        return true;
    }

    bool string() {
        if (*at != '"')
            return false;
        for (++at; *at != '"';) {
            if (!(*at == '\\' ? escape() : character()))
                return false;
        }
        ++at;
        return true;
    }
    bool escape() {
        ++at;
        if (*at == 'u') {
            ++at;
            for (int i = 0; i < 4; ++i, ++at) {
                if (!std::isxdigit(static_cast<unsigned char>(*at)))
                    return false;
            }
            return true;
        }
        return *at != '\0' && std::strchr("\"\\/bfnrt", *at++);
    }
    // No overlong ones, no surrogates.
    bool character() {
        const auto first = static_cast<unsigned char>(*at++);
        if (first < 0x20)
            return false;
        if (first < 0x80)
            return true;
        const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
        unsigned long code = first & (0x3FU >> more);
        if (first < 0xC2 || first > 0xF4)
            return false;
        for (int i = 0; i < more; ++i, ++at) {
            const auto next = static_cast<unsigned char>(*at);
            if ((next & 0xC0) != 0x80)
                return false;
            code = code << 6 | (next & 0x3F);
        }
        const unsigned long least[] = {0, 0x80, 0x800, 0x10000};
        return code >= least[more] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    }

    const char* at;
};
