#include "examples/contacts/book.h"

#include <algorithm>

FX_DEFINE_XDR(Book, "Book", 1)

// The contacts are there when the whole book has been read, and not when this returns: so the index
// has to wait for makeIndex.
unsigned char Book::xdr(fxTranscriber& t) { return contacts.xdr(t); }

bool Book::makeIndex() {
    for (const fxRef<Contact>& contact : contacts) {
        if (!contact || contact->name.length() == 0 || find(contact->name.c_str()))
            return false;
        index.add(contact->name, contact.get());
    }
    for (const fxRef<Contact>& contact : contacts) {
        for (const Contact* other : contact->friends) {
            if (!other || find(other->name.c_str()) != other)
                return false;
        }
    }
    return true;
}

Contact* Book::find(const char* name) const {
    void** const found = index.find(name);
    return found ? static_cast<Contact*>(*found) : nullptr;
}

Contact& Book::findOrAdd(const char* name) {
    if (Contact* found = find(name))
        return *found;
    auto* const contact = new Contact;
    contact->name = name;
    contacts.append(contact);
    index.add(contact->name, contact);
    return *contact;
}

fxRef<Company> Book::company(const char* name) const {
    for (const fxRef<Contact>& contact : contacts) {
        if (contact->company && contact->company->name == name)
            return contact->company;
    }
    fxRef<Company> added(new Company);
    added->name = name;
    return added;
}

bool Book::link(Contact& a, Contact& b) {
    if (a.friends.find(&b) < a.friends.length())
        return false;
    a.friends.append(&b);
    b.friends.append(&a);
    return true;
}

fxArrayOf<Contact*> Book::sorted() const {
    fxArrayOf<Contact*> all;
    for (const fxRef<Contact>& contact : contacts)
        all.append(contact.get());
    std::sort(all.begin(), all.end(),
              [](const Contact* a, const Contact* b) { return a->name < b->name; });
    return all;
}
