#include "examples/wordindex/textFiles.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "examples/wordindex/progress.h"
#include "kelvofxds/str/fxSearchList.h"

namespace {
bool endsWith(const std::string& text, const char* end) {
    const std::size_t n = std::strlen(end);
    return text.size() >= n && text.compare(text.size() - n, n, end) == 0;
}

// C++ headers have no extension, but neither have many other things.
bool isHeader(const std::string& path, const std::string& name) {
    if (endsWith(name, ".h") || endsWith(name, ".hpp"))
        return true;
    return name.find('.') == std::string::npos && path.find("/c++/") != std::string::npos;
}
}  // namespace

void TextFiles::complain(const std::string& path) {
    Progress::complain(path, std::strerror(errno));
    ++failed;
}

void TextFiles::add(const std::string& path) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0) {
        complain(path);
    } else if (S_ISDIR(status.st_mode)) {
        addTree(path, everything);
    } else {
        files.push_back(path);
        totalBytes += static_cast<std::uint64_t>(status.st_size);
    }
}

void TextFiles::addHeaders(const std::string& path) { addTree(path, headers); }

void TextFiles::addMatching(const char* list, const char* pattern) {
    const fxSearchList found(list, pattern);
    bool isAny = false;
    for (unsigned int i = 0; i < found.length(); ++i) {
        const char* path = found[i].c_str();
        struct stat status;
        // Directories match, too, "." and ".." among them.
        if (::stat(path, &status) != 0 || !S_ISREG(status.st_mode))
            continue;
        files.push_back(path);
        totalBytes += static_cast<std::uint64_t>(status.st_size);
        isAny = true;
    }
    if (!isAny) {
        Progress::complain(list, std::string("no file matches ") + pattern);
        ++failed;
    }
}

void TextFiles::addTree(const std::string& directory, Wanted wanted) {
    DIR* open = ::opendir(directory.c_str());
    if (!open) {
        complain(directory);
        return;
    }
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(open)) {
        if (entry->d_name[0] != '.')
            names.emplace_back(entry->d_name);
    }
    ::closedir(open);
    std::sort(names.begin(), names.end());
    const std::string prefix = endsWith(directory, "/") ? directory : directory + "/";
    for (const std::string& name : names)
        addEntry(prefix + name, name, wanted);
}

void TextFiles::addEntry(const std::string& path, const std::string& name, Wanted wanted) {
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0) {
        complain(path);
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        addTree(path, wanted);
        return;
    }
    if (wanted == headers && !isHeader(path, name))
        return;
    // A link that leads nowhere is nobody's text.
    if (S_ISLNK(status.st_mode) && ::stat(path.c_str(), &status) != 0)
        return;
    if (S_ISREG(status.st_mode)) {
        files.push_back(path);
        totalBytes += static_cast<std::uint64_t>(status.st_size);
    }
}
