// Compiles whatever it is given as a regular expression, and uses it.
//
// An input is a pattern, a subject and a template, each ended by a NUL byte;
// what is missing is empty, what is left over belongs to the template. At last
// the template says which bytes of the program are damaged, and how.

#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "kelvofxds/pattern/fxRegEngine.h"

namespace {

struct FreeBlock {
    void operator()(fxregexp* block) const { std::free(block); }
};

unsigned int messages = 0;

void require(bool condition) {
    if (!condition)
        std::abort();
}

// The bytes up to the next NUL of `rest`, which is left with what is behind.
std::string takeText(std::string& rest) {
    const std::size_t end = rest.find('\0');
    std::string text = rest.substr(0, end);
    rest.erase(0, end == std::string::npos ? end : end + 1);
    return text;
}

// The registers lie in the subject, and within what matched.
void checkRegisters(const fxregexp& program, const char* subject, std::size_t length) {
    const char* const start = program.startp[0];
    const char* const end = program.endp[0];
    require(subject <= start && start <= end && end <= subject + length);
    for (unsigned int i = 1; i < fxregexp::groupCount; ++i) {
        require((program.startp[i] == nullptr) == (program.endp[i] == nullptr));
        if (program.startp[i])
            require(start <= program.startp[i] && program.startp[i] <= program.endp[i] &&
                    program.endp[i] <= end);
    }
    require(program.startchar == '\0' || *start == program.startchar);
    require(!program.anchored || start == subject);
    if (program.must)
        require(std::strstr(subject, program.must) != nullptr);
}

// Every byte of the template writes the subject once, at most.
void substitute(const fxregexp& program, const std::string& source, std::size_t subjectLength) {
    std::string dest(source.size() * (subjectLength + 1) + 1, '#');
    fxregsub(&program, source.c_str(), &dest[0]);
    require(std::memchr(dest.data(), '\0', dest.size()) != nullptr);
}

bool isSetIn(const char* place, const char* subject, std::size_t length) {
    return place && subject <= place && place <= subject + length;
}

// Pairs of a place and a byte. The sanitizer knows the exact size of the block.
void damage(fxregexp& program, const std::string& pairs) {
    const std::size_t size = malloc_usable_size(&program) - offsetof(fxregexp, program);
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2)
        program.program[static_cast<unsigned char>(pairs[i]) % size] = pairs[i + 1];
}

// Ends, and leaves what lies in the subject, or nothing.
void runDamaged(fxregexp& program, const char* subject, std::size_t length) {
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i)
        program.startp[i] = program.endp[i] = nullptr;
    const bool found = fxregexec(&program, subject) == 1;
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i) {
        require(!program.startp[i] || (found && isSetIn(program.startp[i], subject, length)));
        require(!program.endp[i] || (found && isSetIn(program.endp[i], subject, length)));
    }
}

}  // namespace

/// Takes the place of the library's function of this name.
void fxregerror(const char*) { ++messages; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string rest(reinterpret_cast<const char*>(data), size);
    const std::string pattern = takeText(rest);
    const std::string subject = takeText(rest);
    const std::string source = rest.substr(0, rest.find('\0'));

    messages = 0;
    const std::unique_ptr<fxregexp, FreeBlock> program(fxregcomp(pattern.c_str()));
    require(messages == (program ? 0 : 1));
    if (!program)
        return 0;

    // In a block of its own size, so that reading behind its end shows.
    const std::unique_ptr<char[]> text(new char[subject.size() + 1]);
    std::memcpy(text.get(), subject.c_str(), subject.size() + 1);
    if (fxregexec(program.get(), text.get()) == 1) {
        checkRegisters(*program, text.get(), subject.size());
        substitute(*program, source, subject.size());
    }
    require(messages == 0);
    damage(*program, rest);
    runDamaged(*program, text.get(), subject.size());
    return 0;
}
