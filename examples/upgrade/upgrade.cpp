// upgrade - turns files that a standard writer has written into graph streams.
// `upgrade --help` says how.

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "kelvofxds/kelvofxds.h"

namespace {

const char usage[] =
    "usage: upgrade [-ns] [-t TYPE] FILE...\n"
    "\n"
    "Turns files of the standard writer into graph streams, which have a checksum and\n"
    "read back whole. Files that are graph streams are left alone, and so is every file\n"
    "that cannot be read: it is replaced in one step, or not at all.\n"
    "\n"
    "  -n  only says what would be done\n"
    "  -s  reads by the standard reader, which drops the spare elements that arrays of\n"
    "      numbers have in such files, but ends the program where bytes make no sense\n"
    "  -t  what is in the files: strings (an array), ints, doubles, dictionary or set.\n"
    "      Without it the name in the file decides, and an array is one of strings\n"
    "\n"
    "The exit status is 0, 1 when a file is not upgraded, and 2 when the arguments make\n"
    "no sense.\n";

const struct {
    const char* name;
    fxTypeObj& type;
} types[] = {{"strings", fxStrArray_type},
             {"ints", fxIntArray_type},
             {"doubles", fxDoubleArray_type},
             {"dictionary", fxStrStrDictionary_type},
             {"set", fxStrSet_type}};

fxTypeObj* typeCalled(const char* name) {
    for (const auto& type : types) {
        if (std::strcmp(type.name, name) == 0)
            return &type.type;
    }
    return nullptr;
}

/// The name in the header: that of the writer's class. Empty if there is none.
std::string writerOf(const char* path) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"), std::fclose);
    std::string name;
    for (int c; file && (c = std::getc(file.get())) > 0;) {
        const std::size_t longest = 100;
        if (name.size() == longest)
            return "";
        name += static_cast<char>(c);
    }
    return name;
}

bool fail(const char* why) {
    std::fprintf(stderr, "upgrade: %s\n", why);
    return false;
}

/// What is in the file, by the reader that its header names. Null if there is none.
fxXDRObj* readByHeader(const char* path, fxTypeObj& type, fxStr& why) {
    fxTypeObj::registerType(&type);  // that of all arrays which an "ARRAY" is to become
    auto* const stream = new fxStdioStream(path, fxStream::readStream);  // the reader's
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(stream));
    void* const object = reader ? reader->readObject(type) : nullptr;
    if (!object)
        why.format("\"%s\" has no object that the standard reader reads", path);
    return static_cast<fxXDRObj*>(object);
}

struct Options {
    fxTypeObj* type = &fxXDRObj_type;
    bool isTrial = false;
    bool byHeader = false;
};

bool upgrade(const char* path, const Options& options) {
    if (writerOf(path) == "fxGraphWriter") {
        std::printf("%s: is a graph stream\n", path);
        return true;
    }
    fxStr why;
    const std::unique_ptr<fxXDRObj> object(options.byHeader
                                               ? readByHeader(path, *options.type, why)
                                               : fxLoadFile(path, *options.type, &why));
    if (!object || (!options.isTrial && !fxSaveFile(path, *object, &why)))
        return fail(why.c_str());
    std::printf("%s: %s %s\n", path, object->getTypeObj().name,
                options.isTrial ? "would be upgraded" : "upgraded");
    return true;
}

int complainOfUsage() {
    std::fputs(usage, stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usage, stdout);
        return 0;
    }
    Options options;
    for (int option; (option = ::getopt(argc, argv, "+nst:")) != -1;) {
        if (option == 'n')
            options.isTrial = true;
        else if (option == 's')
            options.byHeader = true;
        else
            options.type = option == 't' ? typeCalled(optarg) : nullptr;
        if (!options.type)
            return complainOfUsage();
    }
    if (optind == argc)
        return complainOfUsage();
    bool isDone = true;
    for (int i = optind; i < argc; ++i)
        isDone = upgrade(argv[i], options) && isDone;
    return isDone ? 0 : 1;
}
