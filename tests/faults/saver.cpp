// saver.cpp - a program that saves a book, or loads one, for tests that let its
// system calls fail: saver save PATH SEED PEOPLE, saver load PATH.
//
// Writes what it has loaded, or why not. Exits with 0 when that is done.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/transcribe/fxFile.h"
#include "tests/support/savedBook.h"

namespace {
unsigned int numberOf(const char* text) {
    return static_cast<unsigned int>(std::strtoul(text, nullptr, 10));
}

int save(char** arguments) {
    SavedBook book;
    book.fill(numberOf(arguments[2]), numberOf(arguments[1]));
    fxStr why;
    const unsigned char done = fxSaveFile(arguments[0], book, &why);
    std::fputs(why.c_str(), stdout);
    return done ? 0 : 1;
}

int load(const char* path) {
    fxStr why;
    SavedBook* book = fxLoadFile<SavedBook>(path, &why);
    std::fputs(book ? book->text().c_str() : why.c_str(), stdout);
    const int status = book ? 0 : 1;
    delete book;
    return status;
}
}  // namespace

int main(int argc, char** argv) {
    if (argc == 5 && std::strcmp(argv[1], "save") == 0)
        return save(argv + 2);
    if (argc == 3 && std::strcmp(argv[1], "load") == 0)
        return load(argv[2]);
    return 2;
}
