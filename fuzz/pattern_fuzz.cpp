// Compiles whatever it is given as a regular expression, and uses it. Small
// patterns and subjects are given to the slow matcher too, which has to say the
// same of them.
//
// An input is a pattern, a subject and a template, each ended by a NUL byte;
// what is missing is empty, what is left over belongs to the template. At last
// the template says which bytes of the program are damaged, and how.

#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiledBlock.h"
#include "tests/support/regErrors.h"
#include "tests/support/regexPair.h"

namespace {

// The first ones; a damaged program can have one at each place.
const std::size_t mostMessages = 4;
Messages messages;

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

// The engine keeps the code of a large program; that of a small one in the same
// block takes its place, so that nothing seems to leak.
void forget(fxregexp& program) {
    const std::size_t smallest = 10;
    const Compiled empty = compiled("");
    std::memcpy(program.program, empty->program, smallest);
    program.startchar = program.anchored = '\0';
    program.must = nullptr;
    program.mustlen = 0;
    require(fxregexec(&program, "") == 1);
}

void requireSame(const char* difference) {
    if (!difference)
        return;
    std::fprintf(stderr, "%s differs\n", difference);
    std::abort();
}

// What the slow matcher says.
void compareSmall(const std::string& pattern, const std::string& subject,
                  const std::string& source) {
    const std::size_t mostPattern = 24, mostSubject = 32;
    const unsigned long mostSteps = 5000;
    if (pattern.size() > mostPattern)
        return;
    RegexPair pair;
    requireSame(pair.take(pattern));
    if (!pair.hasProgram() || subject.size() > mostSubject)
        return;
    requireSame(pair.search(subject, mostSteps));
    if (!pair.match().gaveUp && pair.match().found)
        requireSame(pair.substitute(source, subject));
    require(takeRegErrors().empty());
    forget(pair.block());
}

// Work goes with the product of two lengths: the second one is cut so that an
// input is no matter of seconds.
std::string cut(const std::string& text, std::size_t otherLength) {
    const std::size_t most = 1 << 17;
    return text.substr(0, most / (otherLength + 16));
}

}  // namespace

/// Takes the place of the library's function of this name.
void fxregerror(const char* message) {
    if (messages.size() < mostMessages)
        messages.push_back(message);
}

Messages takeRegErrors() {
    Messages taken;
    taken.swap(messages);
    return taken;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string rest(reinterpret_cast<const char*>(data), size);
    const std::string pattern = takeText(rest);
    const std::string subject = cut(takeText(rest), pattern.size());
    const std::string source = rest.substr(0, rest.find('\0'));

    compareSmall(pattern, subject, source.substr(0, 64));
    takeRegErrors();
    const Compiled program = compiled(pattern);
    require(takeRegErrors().size() == (program ? 0U : 1U));
    if (!program)
        return 0;

    // In a block of its own size, so that reading behind its end shows.
    const std::unique_ptr<char[]> text(new char[subject.size() + 1]);
    std::memcpy(text.get(), subject.c_str(), subject.size() + 1);
    if (fxregexec(program.get(), text.get()) == 1) {
        checkRegisters(*program, text.get(), subject.size());
        substitute(*program, cut(source, subject.size()), subject.size());
    }
    require(takeRegErrors().empty());
    damage(*program, rest);
    runDamaged(*program, text.get(), subject.size());
    forget(*program);
    return 0;
}
