// book.h - a book of contacts.
#pragma once

#include "examples/contacts/contact.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"

/// Contacts, each under a name of its own, which it holds.
class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    Book() = default;
    Book(const Book&) = delete;
    Book& operator=(const Book&) = delete;

    /// Prepares a book that has just been loaded: it cannot be searched before. False if its
    /// contacts are none that a book could have; no damage comes to that, but somebody may have
    /// made the file.
    bool makeIndex();

    /// The contact called `name`; null if there is none.
    Contact* find(const char* name) const;
    /// The same; made if there is none.
    Contact& findOrAdd(const char* name);
    /// The company called `name` that somebody works for, or else a new one.
    fxRef<Company> company(const char* name) const;
    /// Makes two contacts friends of each other. False if they are.
    static bool link(Contact& a, Contact& b);

    /// All of them, by their names.
    fxArrayOf<Contact*> sorted() const;

private:
    fxArrayOf<fxRef<Contact>> contacts;
    fxVoidPtrDict index;  // from names to contacts; not in the file
};
