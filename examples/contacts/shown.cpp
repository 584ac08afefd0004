#include "examples/contacts/shown.h"

#include <cctype>

#include "examples/contacts/contact.h"
#include "kelvofxds/pattern/fxRegEx.h"

namespace {

// Calls use(field, value) for everything that is known of a contact but the friends.
template <class Use>
void forEachField(const Contact& contact, Use use) {
    if (contact.company)
        use("company", contact.company->name);
    if (contact.birthday.length() != 0)
        use("birthday", contact.birthday);
    for (const Detail& detail : contact.details)
        use(detail.field.c_str(), detail.value);
}

// A text of one line: what would end it, or steer a terminal, is a space.
std::string shown(const fxStr& text) {
    std::string line(text.c_str(), text.length());
    for (char& c : line) {
        if (std::iscntrl(static_cast<unsigned char>(c)))
            c = ' ';
    }
    return line;
}

// A value as vCards have it.
std::string escaped(const fxStr& text) {
    std::string value;
    for (const char c : std::string(text.c_str(), text.length())) {
        if (c == '\n') {
            value += "\\n";
        } else if (!std::iscntrl(static_cast<unsigned char>(c))) {
            if (c == '\\' || c == ',' || c == ';')
                value += '\\';
            value += c;
        }
    }
    return value;
}

// The name that vCards have for a field; X- in front of what they do not know.
std::string propertyOf(const std::string& field) {
    const char* const known[][2] = {{"company", "ORG"}, {"birthday", "BDAY"}, {"phone", "TEL"},
                                    {"email", "EMAIL"}, {"address", "ADR"},   {"note", "NOTE"},
                                    {"url", "URL"},     {"title", "TITLE"}};
    for (const auto& each : known) {
        if (field == each[0])
            return each[1];
    }
    std::string name = "X-";
    for (const char c : field)
        name += std::isalnum(static_cast<unsigned char>(c))
                    ? static_cast<char>(std::toupper(static_cast<unsigned char>(c)))
                    : '-';
    return name;
}

bool matches(const fxRegEx& pattern, const fxStr& text) {
    return pattern.findBuffer(text.c_str(), text.length()) >= 0;
}

}  // namespace

std::string lineOf(const Contact& contact) {
    std::string line = shown(contact.name);
    forEachField(contact, [&line](const char* field, const fxStr& value) {
        line += "  " + shown(field) + "=" + shown(value);
    });
    const char* before = "  friends: ";
    for (const Contact* each : contact.friends) {
        line += before + shown(each->name);
        before = ", ";
    }
    return line + "\n";
}

std::string cardOf(const Contact& contact) {
    std::string card = "BEGIN:VCARD\nVERSION:3.0\nFN:" + escaped(contact.name) + "\n";
    forEachField(contact, [&card](const char* field, const fxStr& value) {
        card += propertyOf(field) + ":" + escaped(value) + "\n";
    });
    for (const Contact* each : contact.friends)
        card += "X-FRIEND:" + escaped(each->name) + "\n";
    return card + "END:VCARD\n";
}

bool isIn(const Contact& contact, const fxRegEx& pattern) {
    bool isFound = matches(pattern, contact.name);
    forEachField(contact, [&](const char*, const fxStr& value) {
        isFound = isFound || matches(pattern, value);
    });
    return isFound;
}
