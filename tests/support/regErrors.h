// regErrors.h - what the regular-expression functions report.
#pragma once

#include <string>
#include <vector>

using Messages = std::vector<std::string>;

/// The messages that reached fxregerror since the last call, in order. This
/// program's fxregerror, which takes the place of the library's, collects them.
Messages takeRegErrors();
