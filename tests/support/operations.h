// operations.h - how many random operations a comparison with a model does.
#pragma once

#include <cstdlib>

/// `usual`, or what KELVOFXDS_OPERATIONS in the environment says.
inline unsigned long operations(unsigned long usual) {
    const char* wanted = std::getenv("KELVOFXDS_OPERATIONS");
    return wanted ? std::strtoul(wanted, nullptr, 10) : usual;
}
