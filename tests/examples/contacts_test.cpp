// The example program examples/contacts, run as its users run it.

#ifdef KELVOFXDS_CONTACTS

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/transcribe/fxFile.h"
#include "tests/support/graphBytes.h"
#include "tests/support/runProgram.h"

namespace {

const Program contacts{KELVOFXDS_CONTACTS};

bool isBigHost() {
    const std::uint16_t one = 1;
    unsigned char first;
    std::memcpy(&first, &one, 1);
    return first == 0;
}

// A book in a folder of its own.
class contactsProgram : public testing::Test {
protected:
    ProgramResult run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"-f", book});
        return contacts.run(arguments);
    }

    // Runs it and expects success without a word.
    void done(const std::vector<std::string>& arguments) const {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(0, result.status) << arguments[0];
        EXPECT_EQ("", result.out) << arguments[0];
        EXPECT_EQ("", result.err) << arguments[0];
    }

    // Expects all commands to refuse the book that is there, with this reason, and to leave it.
    void refused(const std::string& why) const {
        const std::string before = bytesOf(book);
        const std::vector<std::string> commands[] = {
            {"add", "Ada"}, {"link", "Ada", "Bob"}, {"list"}, {"find", "a"}, {"export"}};
        for (const auto& command : commands) {
            const ProgramResult result = run(command);
            EXPECT_EQ(1, result.status) << command[0];
            EXPECT_EQ("", result.out) << command[0];
            EXPECT_EQ(0U, result.err.find("contacts: cannot load \"" + book + "\": "))
                << result.err;
            EXPECT_NE(std::string::npos, result.err.find(why)) << result.err;
            EXPECT_EQ(result.err.size() - 1, result.err.find('\n')) << result.err;
            EXPECT_EQ(before, bytesOf(book)) << command[0];
        }
    }

    const TemporaryFolder folder;
    const std::string book = folder / "book";
};

// A book as the first version of contacts wrote it: Ada, with a phone, and Bob, friends who work
// for one company.
std::string oldBook(bool isBig) {
    GraphBytes b(isBig);
    const auto elements = [&b](std::uint32_t n) { return b.word(n) + b.number(0, 2); };
    b.type(2, "Book").record(10, {1, 2, 1}, elements(2)).record(11, {3}).record(11, {4});
    b.type(5, "Contact")
        .record(10, {3, 5, 1}, b.string("Ada") + elements(1) + b.string("phone") + b.string("1815"))
        .record(11, {6})
        .record(0, {}, elements(1))
        .record(12, {4});
    b.record(10, {4, 5, 1}, b.string("Bob") + elements(0))
        .record(12, {6})
        .record(0, {}, elements(1))
        .record(12, {3});
    b.type(7, "Company").record(10, {6, 7, 1}, b.string("Engines"));
    return b.end().str();
}

}  // namespace

TEST_F(contactsProgram, theFirstContactBeginsTheBook) {
    done({"add", "Ada Lovelace"});
    EXPECT_EQ("Ada Lovelace\n", run({"list"}).out);
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder.path()), {}));
}

TEST_F(contactsProgram, withoutAFileItIsTheOneInTheWorkingFolder) {
    Program here = contacts;
    here.workingFolder = folder.path();
    EXPECT_EQ(0, here.run({"add", "Ada"}).status);
    EXPECT_TRUE(std::filesystem::exists(folder / "contacts.book"));
    EXPECT_EQ("Ada\n", here.run({"list"}).out);
}

TEST_F(contactsProgram, fieldsAreShownAndReplaced) {
    done({"add", "Ada", "phone=1815", "birthday=10 December", "phone=1852", "motto=a=b"});
    EXPECT_EQ("Ada  birthday=10 December  phone=1852  motto=a=b\n", run({"list"}).out);
    done({"add", "Ada", "motto=", "phone=+44"});
    EXPECT_EQ("Ada  birthday=10 December  phone=+44  motto=\n", run({"list"}).out);
}

TEST_F(contactsProgram, contactsAreShownByTheirNames) {
    for (const char* name : {"Carol", "Ada", "Bob"})
        done({"add", name});
    EXPECT_EQ("Ada\nBob\nCarol\n", run({"list"}).out);
}

TEST_F(contactsProgram, friendsAreLinkedBothWays) {
    for (const char* name : {"Ada", "Bob", "Carol"})
        done({"add", name});
    done({"link", "Ada", "Bob"});
    done({"link", "Carol", "Ada"});
    done({"link", "Bob", "Ada"});
    EXPECT_EQ("Ada  friends: Bob, Carol\nBob  friends: Ada\nCarol  friends: Ada\n",
              run({"list"}).out);
}

TEST_F(contactsProgram, colleaguesShareOneCompany) {
    done({"add", "Ada", "company=Engines & Co"});
    done({"add", "Bob", "company=Engines & Co"});
    done({"add", "Carol", "company=Looms"});
    EXPECT_EQ("Ada  company=Engines & Co\nBob  company=Engines & Co\nCarol  company=Looms\n",
              run({"list"}).out);
    const std::string bytes = bytesOf(book);
    const std::size_t once = bytes.find("Engines & Co");
    EXPECT_NE(std::string::npos, once);
    EXPECT_EQ(std::string::npos, bytes.find("Engines & Co", once + 1));
    done({"add", "Carol", "company="});
    EXPECT_EQ(std::string::npos, bytesOf(book).find("Looms"));
}

TEST_F(contactsProgram, findsByRegularExpressions) {
    done({"add", "Ada", "phone=1815"});
    done({"add", "Bob", "company=Adastra"});
    done({"add", "Carol", "birthday=1815-12-10"});
    EXPECT_EQ("Ada  phone=1815\nBob  company=Adastra\n", run({"find", "Ada"}).out);
    EXPECT_EQ("Ada  phone=1815\n", run({"find", "^18..$"}).out);
    EXPECT_EQ("Carol  birthday=1815-12-10\n", run({"find", "-(12|11)-"}).out);
    const ProgramResult none = run({"find", "z"});
    EXPECT_EQ(1, none.status);
    EXPECT_EQ("", none.out + none.err);
}

TEST_F(contactsProgram, exportsCards) {
    done({"add", "Lovelace; Ada", "company=Engines, Ltd", "birthday=1815-12-10", "phone=1815",
          "shoe size=6", "note=two\nlines"});
    done({"add", "Bob"});
    done({"link", "Bob", "Lovelace; Ada"});
    EXPECT_EQ(
        "BEGIN:VCARD\nVERSION:3.0\nFN:Bob\nX-FRIEND:Lovelace\\; Ada\nEND:VCARD\n"
        "BEGIN:VCARD\nVERSION:3.0\nFN:Lovelace\\; Ada\nORG:Engines\\, Ltd\nBDAY:1815-12-10\n"
        "TEL:1815\nX-SHOE-SIZE:6\nNOTE:two\\nlines\nX-FRIEND:Bob\nEND:VCARD\n",
        run({"export"}).out);
}

TEST_F(contactsProgram, whatIsShownIsOfOneLineEach) {
    done({"add", "Ada\n\033[2J", "note=a\tb"});
    EXPECT_EQ("Ada  [2J  note=a b\n", run({"list"}).out);
}

TEST_F(contactsProgram, manyContactsComeBack) {
    std::vector<std::string> last;
    for (int i = 0; i < 100; ++i) {
        const std::string name = "contact " + std::to_string(i);
        done({"add", name, "number=" + std::to_string(i)});
        if (i > 0)
            done({"link", name, "contact " + std::to_string(i - 1)});
    }
    const ProgramResult result = run({"list"});
    EXPECT_EQ(100U, result.lines().size());
    EXPECT_TRUE(result.hasLine("contact 50  number=50  friends: contact 49, contact 51"));
}

// Older books.

TEST_F(contactsProgram, booksFromBeforeBirthdaysAreRead) {
    for (const bool isBig : {false, true}) {
        SCOPED_TRACE(isBig);
        folder.file("book", oldBook(isBig));
        EXPECT_EQ(
            "Ada  company=Engines  phone=1815  friends: Bob\nBob  company=Engines  friends: Ada\n",
            run({"list"}).out);
        done({"add", "Bob", "birthday=1 April"});
        EXPECT_EQ("Bob  company=Engines  birthday=1 April  friends: Ada\n",
                  run({"find", "Bob"}).out);
    }
}

// What it does not take.

TEST_F(contactsProgram, aBookThatIsNotThere) {
    for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{
             {"list"}, {"find", "a"}, {"export"}, {"link", "a", "b"}}) {
        const ProgramResult result = run(command);
        EXPECT_EQ(1, result.status);
        EXPECT_EQ(0U, result.err.find("contacts: cannot load \"" + book + "\": ")) << result.err;
        EXPECT_NE(std::string::npos, result.err.find("No such file")) << result.err;
        EXPECT_FALSE(std::filesystem::exists(book));
    }
}

TEST_F(contactsProgram, foreignFilesAreRefused) {
    folder.file("book", "");
    refused("");
    folder.file("book", "#!/bin/sh\necho not a book\n");
    refused("");
    fxStrStrDictionary words;
    words.add("one", "two");
    ASSERT_EQ(1, fxSaveFile(book.c_str(), words));
    refused("");
}

TEST_F(contactsProgram, cutsAndFlipsAreRefused) {
    done({"add", "Ada", "company=Engines"});
    done({"add", "Bob"});
    done({"link", "Ada", "Bob"});
    const std::string sound = bytesOf(book);
    for (std::size_t length = 0; length < sound.size(); length += 3) {
        folder.file("book", sound.substr(0, length));
        EXPECT_EQ(1, run({"list"}).status) << length;
    }
    for (std::size_t at = 0; at < sound.size(); at += 5) {
        std::string bytes = sound;
        bytes[at] = static_cast<char>(bytes[at] ^ (1 << at % 8));
        folder.file("book", bytes);
        const ProgramResult result = run({"list"});
        EXPECT_EQ(1, result.status) << at;
        EXPECT_EQ("", result.out) << at;
    }
    folder.file("book", sound.substr(0, sound.size() / 2));
    refused("");
}

TEST_F(contactsProgram, booksWhoseContactsAreNoneAreRefused) {
    // A flip and its checksum could be both somebody's work: two contacts get one name.
    done({"add", "Ada"});
    done({"add", "Bob"});
    std::string bytes = bytesOf(book);
    const std::size_t name = bytes.find("Bob");
    ASSERT_NE(std::string::npos, name);
    bytes.replace(name, 3, "Ada");
    const std::size_t header = 25, end = 5;
    bytes.resize(bytes.size() - end);
    folder.file("book", GraphBytes(isBigHost()).raw(bytes.substr(header)).end().str());
    refused("a contact is missing or comes twice");
}

TEST_F(contactsProgram, aBookThatCannotBeWritten) {
    const std::string nowhere = folder / "no/such/folder/book";
    const ProgramResult result = contacts.run({"-f", nowhere, "add", "Ada"});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(0U, result.err.find("contacts: cannot save \"" + nowhere + "\": ")) << result.err;
}

TEST_F(contactsProgram, linksOfPeopleWhoAreThere) {
    done({"add", "Ada"});
    const ProgramResult missing = run({"link", "Ada", "Bob"});
    EXPECT_EQ(1, missing.status);
    EXPECT_EQ("contacts: there is no \"Bob\"\n", missing.err);
    const ProgramResult self = run({"link", "Ada", "Ada"});
    EXPECT_EQ(1, self.status);
    EXPECT_EQ("contacts: nobody is a friend of his own\n", self.err);
}

TEST_F(contactsProgram, argumentsThatMakeNoSenseAreRefused) {
    done({"add", "Ada"});
    const std::vector<std::string> cases[] = {{"remove"},
                                              {"add"},
                                              {"add", ""},
                                              {"add", "Bob", "phone"},
                                              {"add", "Bob", "=1"},
                                              {"link", "Ada"},
                                              {"link", "Ada", "Ada", "Ada"},
                                              {"list", "Ada"},
                                              {"find"},
                                              {"find", "a", "b"},
                                              {"find", "("},
                                              {"export", "Ada"}};
    for (const auto& arguments : cases) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(2, result.status) << arguments[0];
        EXPECT_EQ("", result.out) << arguments[0];
        EXPECT_NE("", result.err) << arguments[0];
    }
    EXPECT_EQ(2, contacts.run({}).status);
    EXPECT_EQ(2, contacts.run({"-f", book}).status);
    EXPECT_EQ("Ada\n", run({"list"}).out);
}

TEST_F(contactsProgram, helpDescribesTheCommands) {
    const ProgramResult result = contacts.run({"--help"});
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.err);
    for (const char* word : {"-f FILE", "add NAME", "link A B", "list", "find REGEX", "export"})
        EXPECT_NE(std::string::npos, result.out.find(word)) << word;
}

TEST_F(contactsProgram, outputThatCannotBeWrittenIsAFailure) {
    done({"add", "Ada"});
    const ProgramResult result = Program(theShell).run(
        argumentsForScript("\"$@\" -f '" + book + "' list >/dev/full", KELVOFXDS_CONTACTS));
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("contacts: the output cannot be written\n", result.err);
}

#endif
