// savedBook.h - a host's classes, whose objects are saved to files and loaded.
#pragma once

#include <string>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// One of a ring of people; each has a friend somewhere in it.
class SavedPerson : public fxXDRObj {
public:
    SavedPerson() : next(nullptr), friendOf(nullptr) { ++alive; }
    ~SavedPerson() override { --alive; }

    const char* className() const override { return "SavedPerson"; }
    unsigned char xdr(fxTranscriber& t) override;
    fxTypeObj& getTypeObj() const override;
    static void* newInstance(fxTypeObj&) { return new SavedPerson; }
    static void deleteInstance(void* object) { delete static_cast<SavedPerson*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<SavedPerson*>(object)->xdr(t);
    }

    fxStr name;
    SavedPerson* next;      // owned by the book
    SavedPerson* friendOf;  // the same
    inline static int alive = 0;
};

inline fxTypeObj SavedPerson_type("SavedPerson", 1, SavedPerson::newInstance,
                                  SavedPerson::deleteInstance, SavedPerson::xdr);

inline fxTypeObj& SavedPerson::getTypeObj() const { return SavedPerson_type; }

inline unsigned char SavedPerson::xdr(fxTranscriber& t) {
    return name.xdr(t) && t.xdr(&next, next, SavedPerson_type, this, nullptr) &&
           t.xdr(&friendOf, friendOf, SavedPerson_type, this, nullptr);
}

/// Owns a ring of people.
class SavedBook : public fxXDRObj {
public:
    SavedBook() : first(nullptr) { ++alive; }
    SavedBook(const SavedBook&) = delete;
    SavedBook& operator=(const SavedBook&) = delete;
    ~SavedBook() override;

    const char* className() const override { return "SavedBook"; }
    unsigned char xdr(fxTranscriber& t) override;
    fxTypeObj& getTypeObj() const override;
    static void* newInstance(fxTypeObj&) { return new SavedBook; }
    static void deleteInstance(void* object) { delete static_cast<SavedBook*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<SavedBook*>(object)->xdr(t);
    }

    /// With `n` people, all of whose details depend on `seed`.
    void fill(unsigned int n, unsigned int seed);
    /// All that it holds, as a text.
    std::string text() const;

    SavedPerson* first;
    fxStrStrDictionary phones;
    fxIntArray years;
    inline static int alive = 0;
};

inline fxTypeObj SavedBook_type("SavedBook", 1, SavedBook::newInstance, SavedBook::deleteInstance,
                                SavedBook::xdr);

inline fxTypeObj& SavedBook::getTypeObj() const { return SavedBook_type; }

inline SavedBook::~SavedBook() {
    --alive;
    SavedPerson* at = first;
    while (at) {
        SavedPerson* const following = at->next;
        delete at;
        at = following == first ? nullptr : following;
    }
}

inline unsigned char SavedBook::xdr(fxTranscriber& t) {
    return t.xdr(&first, first, SavedPerson_type, this, nullptr) &&
           t.xdr(fxStrStrDictionary_type, nullptr, &phones) &&
           t.xdr(years.getTypeObj(), nullptr, &years);
}

inline void SavedBook::fill(unsigned int n, unsigned int seed) {
    SavedPerson* last = nullptr;
    for (unsigned int i = 0; i < n; ++i) {
        auto* person = new SavedPerson;
        person->name.format("person %u of %u", i, seed);
        person->friendOf = last ? last : person;
        (last ? last->next : first) = person;
        person->next = first;
        last = person;
        const int year = static_cast<int>(1900 + (i * seed) % 100);
        years.append(&year);
        fxStr phone;
        phone.format("%u-%u", seed, i * 7919);
        phones.add(person->name, phone);
    }
    if (first)
        first->friendOf = last;
}

inline std::string SavedBook::text() const {
    std::string all = std::to_string(phones.length());
    const SavedPerson* at = first;
    for (unsigned int i = 0; at && i < years.length(); ++i, at = at->next) {
        const fxStr* phone = phones.find(at->name);
        all += std::string("\n") + at->name.c_str() + ", friend of " + at->friendOf->name.c_str() +
               ", " + (phone ? phone->c_str() : "no phone") + ", " + std::to_string(years[i]);
    }
    return at == first ? all : all + "\nis no ring";
}
