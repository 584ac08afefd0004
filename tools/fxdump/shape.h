// shape.h - what the contents of the library's own classes consist of.
#pragma once

#include <string>

#include "tools/fxdump/view.h"

namespace fxdump {

/// Part of an object's contents.
struct Part {
    enum class Role : unsigned char {
        none,      ///< There is no part.
        value,     ///< A word or short that only counts as itself.
        count,     ///< A word: how many entries there are.
        size,      ///< A word: bytes of the elements in use.
        width,     ///< A short: bytes of an element.
        string,    ///< A word, the length + 1, and the text or a pointer to it.
        elements,  ///< As many as size and width say.
    };

    Role role = Role::none;
    const char* label = "";

    Form form() const { return role == Role::width ? Form::shorts : Form::longs; }
};

/// The contents of a class: the parts of its head once, then those of an entry as
/// often as the head's count says.
struct Shape {
    static const unsigned int mostParts = 5;

    const char* typeName;
    Part head[mostParts];
    Part entry[mostParts];
    const char* spare;  ///< What may follow in a standard stream; "" if nothing does.
};

/// The shape of what goes by that name in streams; null if it is not known.
const Shape* shapeOf(const std::string& typeName);

}  // namespace fxdump
