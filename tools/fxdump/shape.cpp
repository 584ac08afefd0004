#include "tools/fxdump/shape.h"

namespace fxdump {

namespace {
using Role = Part::Role;

// docs/stream-format.md, "The library's types".
const Shape shapes[] = {
    {"fxXDRObj", {}, {}, ""},
    {"fxStr", {{Role::string, "string"}}, {}, ""},
    {"ARRAY",
     {{Role::size, "bytes in use"},
      {Role::width, "size of an element"},
      {Role::elements, "element"}},
     {},
     "spare elements"},
    {"DICT",
     {{Role::count, "pairs"},
      {Role::value, "size of a key"},
      {Role::value, "size of a value"},
      {Role::value, "buckets"}},
     {{Role::string, "key"}, {Role::string, "value"}, {Role::value, "bucket"}},
     ""},
    {"SET",
     {{Role::count, "keys"}, {Role::value, "size of a key"}, {Role::value, "buckets"}},
     {{Role::string, "key"}, {Role::value, "bucket"}},
     ""},
};
}  // namespace

const Shape* shapeOf(const std::string& typeName) {
    for (const Shape& shape : shapes) {
        if (typeName == shape.typeName)
            return &shape;
    }
    return nullptr;
}

}  // namespace fxdump
