// fxVirtualEntryInternal.h - which version of a virtual operation an object's class has.
#pragma once

#include <cstdint>
#include <cstring>

/// Where a virtual call of `operation` on `object` leads, to be compared with where it leads on
/// another object.
///
/// No run-time type information is asked for, since a host's classes may have none. The entry is
/// read from the object's first table, at the offset that the C++ ABI keeps in the first word of a
/// member pointer. The lowest bit of that word says that the operation is virtual; ARM keeps that
/// in the second word and leaves the bit 0.
///
/// An operation may have two addresses: that in the library, and a stand-in in a host that is not
/// position independent, which the host's tables hold. A table of the library holds the same one as
/// long as the file that defines the table does not also define the operation, or is compiled with
/// -fsemantic-interposition. Only such tables may be compared with those of hosts.
///
/// Requires: `operation` is virtual, and Class's table is the first of the object.
template <class Class, class Operation>
std::uintptr_t fxVirtualEntry(const Class& object, Operation Class::*operation) {
    std::uintptr_t offset = 0;
    std::memcpy(&offset, &operation, sizeof offset);
    const char* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
    std::uintptr_t entry = 0;
    std::memcpy(&entry, table + (offset & ~std::uintptr_t(1)), sizeof entry);
    return entry;
}
