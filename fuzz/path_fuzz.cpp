// Takes paths apart and expands them, beside rules written down once more.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/options.h"
#include "kelvofxds/str/fxPath.h"
#include "kelvofxds/str/fxPathNames.h"
#include "tests/support/script.h"

namespace {

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

std::string withoutSlashesAtTheEnd(const std::string& path) {
    return path.substr(0, path.find_last_not_of('/') + 1);
}

std::string basename(const std::string& path) {
    const std::string rest = withoutSlashesAtTheEnd(path);
    return rest.substr(rest.rfind('/') + 1);
}

std::string dirname(const std::string& path) {
    const std::string rest = withoutSlashesAtTheEnd(path);
    const std::size_t slash = rest.rfind('/');
    if (slash == std::string::npos)
        return rest.empty() && !path.empty() ? "/" : ".";
    return withoutSlashesAtTheEnd(rest.substr(0, slash));
}

void checkTilde(const std::string& path) {
    const Text expanded(pathexpandtilde(path.c_str()));
    require(expanded != nullptr);
    if (path.empty() || path[0] != '~') {
        require(path == expanded.get());
        return;
    }
    const std::size_t end = path.find('/') == std::string::npos ? path.size() : path.find('/');
    const std::string rest = path.substr(end);
    const std::string text = expanded.get();
    require(text.size() >= rest.size() && text.substr(text.size() - rest.size()) == rest);
    require(end != 1 || text == "/home/of/a" + rest);
}

// The value of each name that something ends; the last one loses a byte.
bool expand(const std::string& text, std::string& result) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '$') {
            result += text[i];
            continue;
        }
        std::size_t end = text.find_first_of("/ ", i + 1);
        if (end == std::string::npos)
            end = text.size() - 1;
        const std::string name = end > i ? text.substr(i + 1, end - i - 1) : "";
        const char* value = name.empty() ? nullptr : std::getenv(name.c_str());
        if (!value)
            return false;
        result += value;
        result += text[end];
        i = end;
    }
    return true;
}

void checkVariables(const std::string& text, unsigned int size) {
    const Text expanded(environmentVariableExtendedName(text.c_str(), size));
    std::string wanted;
    const bool isKnown = expand(text, wanted);
    require(isKnown == (expanded != nullptr));
    require(!isKnown || wanted == expanded.get());
}

void checkSplit(const std::string& text) {
    const fxPath path(text.c_str());
    fxPath directory;
    fxPath leaf;
    path.split(&directory, &leaf);
    require(directory == path.directory() && leaf == path.leaf());
    require(directory.length() <= path.length() && leaf.length() <= path.length());
    require(leaf == basename(text).c_str());
    require(text.empty() || dirname(text).size() > text.size() ||
            directory == dirname(text).c_str());
    fxPath self(path);
    self.split(&self, &leaf);
    require(self == directory);
}

}  // namespace

FUZZ_OPTIONS("")

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    ::setenv("HOME", "/home/of/a", 1);
    ::setenv("a", "value of a", 1);
    ::setenv("ab", "", 1);
    ::setenv("b", "$a", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    const unsigned int room = script.below(40);
    std::string path;
    if (script.below(2) == 0) {
        while (!script.isOver())
            path += "/~ab$. "[script.below(7)];
    } else {
        while (!script.isOver())
            path += static_cast<char>(script.byte());
        path = path.c_str();
    }
    const Text last(pathbasename(path.c_str()));
    const Text first(pathdirname(path.c_str()));
    require(last && basename(path) == last.get());
    require(first && dirname(path) == first.get());
    checkTilde(path);
    checkVariables(path, room);
    checkSplit(path);
    const Text link(symbolicLinkExtendedName(path.c_str(), room));
    require(!link || std::strlen(link.get()) <= room);
    return 0;
}
