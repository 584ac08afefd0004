// contacts - a contact book in a file. `contacts --help` lists what it does.

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "examples/contacts/book.h"
#include "examples/contacts/shown.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/pattern/fxRegEx.h"
#include "kelvofxds/transcribe/fxFile.h"

namespace {

const char usage[] =
    "usage: contacts [-f FILE] COMMAND\n"
    "\n"
    "  add NAME [FIELD=VALUE]...\n"
    "              adds a contact, or fields to one that is there; colleagues have\n"
    "              one company=, and everything else but birthday= may have any name\n"
    "  link A B    makes two contacts friends of each other\n"
    "  list        shows all contacts\n"
    "  find REGEX  shows those in which the regular expression is found\n"
    "  export      writes them as vCards\n"
    "\n"
    "The book is in FILE, \"contacts.book\" without the option; the first contact begins\n"
    "it. It is replaced as a whole or left as it was. The exit status is 0, 1 when\n"
    "something is not there or could not be read or written, and 2 when the arguments\n"
    "make no sense.\n";

using Arguments = std::vector<const char*>;

int complain(const std::string& what) {
    std::fprintf(stderr, "contacts: %s\n", what.c_str());
    return 1;
}

int complainOfUsage() {
    std::fputs(usage, stderr);
    return 2;
}

// Null, after a complaint, unless there is a sound book in the file.
fxRef<Book> loaded(const char* path) {
    fxStr why;
    fxRef<Book> book(fxLoadFile<Book>(path, &why));
    if (!book) {
        complain(why.c_str());
    } else if (!book->makeIndex()) {
        complain(std::string("cannot load \"") + path + "\": a contact is missing or comes twice");
        book.reset();
    }
    return book;
}

int save(const char* path, Book& book) {
    fxStr why;
    return fxSaveFile(path, book, &why) ? 0 : complain(why.c_str());
}

// Whether it is FIELD=VALUE, for a field that has a name.
bool isAssignment(const char* argument) {
    const char* const equals = std::strchr(argument, '=');
    return equals && equals != argument;
}

void assign(const Book& book, Contact& contact, const char* argument) {
    const char* const equals = std::strchr(argument, '=');
    const fxStr field(argument, static_cast<unsigned int>(equals - argument));
    const char* const value = equals + 1;
    if (field == "company")
        contact.company = *value != '\0' ? book.company(value) : nullptr;
    else if (field == "birthday")
        contact.birthday = value;
    else
        contact.set(field.c_str(), value);
}

int add(const char* path, const Arguments& arguments) {
    if (arguments.empty() || *arguments[0] == '\0')
        return complainOfUsage();
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        if (!isAssignment(arguments[i]))
            return complainOfUsage();
    }
    const bool isThere = ::access(path, F_OK) == 0;
    const fxRef<Book> book(isThere ? loaded(path) : new Book);
    if (!book)
        return 1;
    Contact& contact = book->findOrAdd(arguments[0]);
    for (std::size_t i = 1; i < arguments.size(); ++i)
        assign(*book, contact, arguments[i]);
    return save(path, *book);
}

int link(const char* path, const Arguments& arguments) {
    if (arguments.size() != 2)
        return complainOfUsage();
    const fxRef<Book> book(loaded(path));
    if (!book)
        return 1;
    Contact* ends[2];
    for (std::size_t i = 0; i < 2; ++i) {
        ends[i] = book->find(arguments[i]);
        if (!ends[i])
            return complain(std::string("there is no \"") + arguments[i] + "\"");
    }
    if (ends[0] == ends[1])
        return complain("nobody is a friend of his own");
    return Book::link(*ends[0], *ends[1]) ? save(path, *book) : 0;
}

int list(const char* path, const Arguments& arguments) {
    if (!arguments.empty())
        return complainOfUsage();
    const fxRef<Book> book(loaded(path));
    if (!book)
        return 1;
    for (const Contact* contact : book->sorted())
        std::fputs(lineOf(*contact).c_str(), stdout);
    return 0;
}

int find(const char* path, const Arguments& arguments) {
    if (arguments.size() != 1)
        return complainOfUsage();
    const fxRegEx pattern(arguments[0]);
    const int isNone = -2;
    if (pattern.findBuffer("", 0) == isNone) {
        complain(std::string("\"") + arguments[0] + "\" is no regular expression");
        return 2;
    }
    const fxRef<Book> book(loaded(path));
    if (!book)
        return 1;
    bool isFound = false;
    for (const Contact* contact : book->sorted()) {
        if (!isIn(*contact, pattern))
            continue;
        isFound = true;
        std::fputs(lineOf(*contact).c_str(), stdout);
    }
    return isFound ? 0 : 1;
}

int exportAll(const char* path, const Arguments& arguments) {
    if (!arguments.empty())
        return complainOfUsage();
    const fxRef<Book> book(loaded(path));
    if (!book)
        return 1;
    for (const Contact* contact : book->sorted())
        std::fputs(cardOf(*contact).c_str(), stdout);
    return 0;
}

int run(const char* path, const Arguments& words) {
    const struct {
        const char* name;
        int (*function)(const char* path, const Arguments& arguments);
    } commands[] = {
        {"add", add}, {"link", link}, {"list", list}, {"find", find}, {"export", exportAll}};
    for (const auto& command : commands) {
        if (!words.empty() && std::strcmp(words[0], command.name) == 0)
            return command.function(path, Arguments(words.begin() + 1, words.end()));
    }
    return complainOfUsage();
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    Arguments words(argv + 1, argv + argc);
    if (words.size() == 1 && std::strcmp(words[0], "--help") == 0) {
        std::fputs(usage, stdout);
        return 0;
    }
    const char* path = "contacts.book";
    if (words.size() >= 2 && std::strcmp(words[0], "-f") == 0) {
        path = words[1];
        words.erase(words.begin(), words.begin() + 2);
    }
    const int status = run(path, words);
    return std::fflush(stdout) == 0 ? status : complain("the output cannot be written");
}
