#include "kelvofxds/str/fxSearchList.h"

#include <dirent.h>

#include <cstring>

#include "kelvofxds/core/fxUninterruptedInternal.h"
#include "kelvofxds/pattern/fxRegEx.h"
#include "kelvofxds/str/fxTempStr.h"

namespace {

bool matchesWhole(const fxRegEx& pattern, const char* name) {
    const unsigned int length = static_cast<unsigned int>(std::strlen(name));
    int start, end;
    pattern.bracketBuffer(name, length, start, end);
    return start == 0 && static_cast<unsigned int>(end) == length;
}

// Appends the matching entries of a directory to `found`.
void addMatches(const fxStr& directory, const fxStr& expr, fxStrArray& found) {
    DIR* entries = fxUninterruptedLookUp([&] { return ::opendir(directory.c_str()); });
    if (!entries)
        return;
    const fxStr prefix = directory | "/";
    const fxRegEx pattern(expr);
    const auto next = [entries] { return ::readdir64(entries); };
    while (const dirent64* entry = fxUninterruptedLookUp(next)) {
        if (matchesWhole(pattern, entry->d_name))
            found.append(fxStr(prefix | entry->d_name));
    }
    ::closedir(entries);
}

}  // namespace

fxSearchList::fxSearchList(const char* list, const char* expr)
    : regexpStr(expr), searchListStr(list) {
    if (searchListStr.length() != 0)
        recalc();
}

fxSearchList::~fxSearchList() {}

bool fxSearchList::replaceList(const char* list) {
    if (searchListStr == list)
        return false;
    searchListStr = list;
    return true;
}

bool fxSearchList::replaceExpression(const char* expr) {
    if (regexpStr == expr)
        return false;
    regexpStr = expr;
    return true;
}

void fxSearchList::searchList(const char* list) {
    if (replaceList(list))
        recalc();
}

void fxSearchList::regexp(const char* expr) {
    if (replaceExpression(expr))
        recalc();
}

void fxSearchList::searchCriteria(const char* list, const char* expr) {
    // Either may be part of the text that the other replaces.
    const fxStr newExpr(expr);
    const bool isOtherList = replaceList(list);
    const bool isOtherExpr = replaceExpression(newExpr.c_str());
    if (isOtherList || isOtherExpr)
        recalc();
}

void fxSearchList::recalc() {
    resize(0);
    for (unsigned int pos = 0; pos < searchListStr.length();)
        addMatches(searchListStr.token(pos, ':'), regexpStr, *this);
}
