// describe.h - records in words, for the views that people read.
#pragma once

#include <string>

#include "tools/fxdump/stream.h"

namespace fxdump {

/// The arguments of a record, such as "#1 Glossary, type 2, version 1"; empty where
/// there are none. The payload is not mentioned.
std::string argumentsOf(const Record& record);

/// What the word at `i` is and says, such as "type: 2".
std::string wordOf(const Record& record, unsigned int i);

/// What the checksum at the end of a root is: "right", or "wrong: ...".
std::string verdictOn(const Record& rootEnd);

/// Of a type, in quotes.
std::string nameOf(const Record& type);

}  // namespace fxdump
