// fxTableOfInternal.h - telling the class of an object.
#pragma once

#include <cstring>

/// The address of the table of virtual operations with which `object` begins: it
/// tells the object's class, or the base that is under construction. Of a host's
/// class no run-time type information may be asked for, since it may have none.
inline const void* fxTableOf(const void* object) {
    const void* table;
    std::memcpy(&table, object, sizeof table);
    return table;
}
