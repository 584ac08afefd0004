#include "kelvofxds/str/fxPathNames.h"

#include <pwd.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxUninterruptedInternal.h"

namespace {

const std::size_t longestUserName = 255;

// A block for `n` bytes and a NUL; null if there is no memory. A size that no
// object can have is not asked for.
char* blockFor(std::size_t n) {
    return n < PTRDIFF_MAX ? static_cast<char*>(std::malloc(n + 1)) : nullptr;
}

// The `n` bytes at `from` as a text of its own; null if there is no memory.
char* textOf(const char* from, std::size_t n) {
    char* text = blockFor(n);
    if (!text)
        return nullptr;
    std::memcpy(text, from, n);
    text[n] = '\0';
    return text;
}

// Where the last component of a path begins and ends.
struct LastComponent {
    explicit LastComponent(const char* path) : end(path + std::strlen(path)) {
        while (end > path && end[-1] == '/')
            --end;
        start = end;
        while (start > path && start[-1] != '/')
            --start;
    }

    const char* start;
    const char* end;
};

// The home directory of the user whose name begins at `name` and ends at `end`;
// null if there is no such user.
const char* homeOf(const char* name, const char* end) {
    const std::size_t length = static_cast<std::size_t>(end - name);
    if (length > longestUserName)
        return nullptr;
    char user[longestUserName + 1];
    std::memcpy(user, name, length);
    user[length] = '\0';
    const passwd* entry = fxUninterruptedLookUp([&user] { return ::getpwnam(user); });
    return entry ? entry->pw_dir : nullptr;
}

// A text that grows at its end.
class GrowingText {
public:
    // Room for `size` bytes and a NUL at first.
    explicit GrowingText(std::size_t size) : capacity(size + 1), length(0), text(blockFor(size)) {}
    GrowingText(const GrowingText&) = delete;
    GrowingText& operator=(const GrowingText&) = delete;
    ~GrowingText() { std::free(text); }

    // Once memory has run out, nothing is appended any more.
    void append(const char* from, std::size_t n) {
        if (!text || !makeRoom(n))
            return;
        std::memcpy(text + length, from, n);
        length += n;
    }

    // The text, now the caller's; null if memory ran out.
    char* release() {
        char* released = text;
        if (released)
            released[length] = '\0';
        text = nullptr;
        return released;
    }

private:
    bool makeRoom(std::size_t n) {
        std::size_t needed;
        const bool tooLong = __builtin_add_overflow(length + 1, n, &needed);
        if (!tooLong && needed <= capacity)
            return true;
        const std::size_t doubled = capacity <= PTRDIFF_MAX / 2 ? capacity * 2 : PTRDIFF_MAX;
        const std::size_t larger = doubled > needed ? doubled : needed;
        char* moved = tooLong || needed > PTRDIFF_MAX
                          ? nullptr
                          : static_cast<char*>(std::realloc(text, larger));
        if (!moved) {
            std::free(text);
            text = nullptr;
            return false;
        }
        text = moved;
        capacity = larger;
        return true;
    }

    std::size_t capacity;
    std::size_t length;
    char* text;  // null once memory has run out
};

// The value of the variable whose name is the bytes from `name` to `end`; null
// if it is not set or the name is empty. `buffer` has room for the name.
const char* valueOf(const char* name, const char* end, char* buffer) {
    if (end <= name)
        return nullptr;
    const std::size_t length = static_cast<std::size_t>(end - name);
    std::memcpy(buffer, name, length);
    buffer[length] = '\0';
    return std::getenv(buffer);
}

// Appends `text` with its variables replaced. Returns false if one is not set.
bool expandVariables(const char* text, char* nameBuffer, GrowingText& output) {
    const char* const textEnd = text + std::strlen(text);
    const char* copied = text;  // up to here the text has been appended
    const char* scan = text;
    while (const char* dollar = std::strchr(scan, '$')) {
        output.append(copied, static_cast<std::size_t>(dollar - copied));
        const char* name = dollar + 1;
        const char* end = name + std::strcspn(name, "/ ");
        if (end == textEnd)
            --end;  // the last byte never belongs to the name
        const char* value = valueOf(name, end, nameBuffer);
        if (!value)
            return false;
        output.append(value, std::strlen(value));
        copied = end;
        scan = end + 1;
    }
    output.append(copied, static_cast<std::size_t>(textEnd - copied));
    return true;
}

}  // namespace

char* pathbasename(const char* path) {
    if (!path)
        return nullptr;
    const LastComponent last(path);
    return textOf(last.start, static_cast<std::size_t>(last.end - last.start));
}

char* pathdirname(const char* path) {
    if (!path)
        return nullptr;
    const char* end = LastComponent(path).start;
    if (end == path)
        return textOf(path[0] == '/' ? "/" : ".", 1);
    while (end > path && end[-1] == '/')
        --end;
    return textOf(path, static_cast<std::size_t>(end - path));
}

char* pathexpandtilde(const char* path) {
    if (!path)
        return nullptr;
    if (path[0] != '~')
        return ::strdup(path);
    const char* name = path + 1;
    const char* rest = name + std::strcspn(name, "/");
    const bool isOwn = rest == name;
    const char* home = isOwn ? std::getenv("HOME") : homeOf(name, rest);
    if (!home) {
        if (!isOwn)
            return ::strdup(path);
        home = "";
    }
    const std::size_t homeLength = std::strlen(home);
    GrowingText expanded(homeLength + std::strlen(rest));
    expanded.append(home, homeLength);
    expanded.append(rest, std::strlen(rest));
    return expanded.release();
}

char* symbolicLinkExtendedName(const char* path, unsigned int size) {
    if (!path)
        return nullptr;
    char* target = blockFor(size);
    if (!target)
        return nullptr;
    const ssize_t length = ::readlink(path, target, size);
    if (length < 1) {
        std::free(target);
        return nullptr;
    }
    target[length] = '\0';
    return target;
}

char* environmentVariableExtendedName(const char* text, unsigned int size) {
    if (!text)
        return nullptr;
    GrowingText output(size);
    char* nameBuffer = blockFor(std::strlen(text));
    const bool allSet = nameBuffer && expandVariables(text, nameBuffer, output);
    std::free(nameBuffer);
    return allSet ? output.release() : nullptr;
}
