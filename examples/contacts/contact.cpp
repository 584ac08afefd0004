#include "examples/contacts/contact.h"

FX_DEFINE_XDR(Company, "Company", 1)

unsigned char Company::xdr(fxTranscriber& t) { return name.xdr(t); }

FX_DEFINE_XDR(Contact, "Contact", 2)

unsigned char Contact::xdr(fxTranscriber& t) {
    if (!name.xdr(t) || !details.xdr(t) || !fxXdrRef(t, company) || !friends.xdr(t))
        return 0;
    // Files from before there were birthdays say that they have version 1.
    return t.objectVersion() < 2 || birthday.xdr(t);
}

const char* Contact::find(const char* field) const {
    for (const Detail& detail : details) {
        if (detail.field == field)
            return detail.value.c_str();
    }
    return nullptr;
}

void Contact::set(const char* field, const char* value) {
    for (Detail& detail : details) {
        if (detail.field == field) {
            detail.value = value;
            return;
        }
    }
    details.append({field, value});
}
