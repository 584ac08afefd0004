// contact.h - a person, and the company that several of them work for.
#pragma once

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/core/fxRef.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxXDRMembers.h"

/// Shared by those who work for it, and gone with the last of them.
class Company : public fxXDRObj {
    FX_XDR_MEMBERS(Company)
    fxStr name;
};

/// A field such as "phone". An element of an array: it needs no more than an xdr.
struct Detail {
    bool xdr(fxTranscriber& t) { return field.xdr(t) && value.xdr(t); }

    fxStr field;
    fxStr value;
};

/// Its strings may be moved by their bytes, and so may it.
template <>
struct fxMovesByBytes<Detail> : std::true_type {};

class Contact : public fxXDRObj {
    FX_XDR_MEMBERS(Contact)
    /// The value of `field`; null if there is none.
    const char* find(const char* field) const;
    /// Gives `field` a value, in place of an old one. "company" and "birthday" are not for it.
    void set(const char* field, const char* value);

    fxStr name;
    fxStr birthday;               ///< Since version 2; may be empty.
    fxArrayOf<Detail> details;    ///< The other fields.
    fxRef<Company> company;       ///< Held together with the colleagues; null if there is none.
    fxArrayOf<Contact*> friends;  ///< Who have this one as a friend, too. They are the book's:
                                  ///< friends that held each other would never be deleted.
};
