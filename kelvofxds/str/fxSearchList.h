// fxSearchList.h - the files in a list of directories that match a pattern.
#pragma once

#include "kelvofxds/str/fxStrArray.h"

/// Every entry of some directories whose whole name a regular expression
/// matches, as "directory/name".
///
/// The directories are separated by ":", runs of which count as one. Elements
/// are grouped by directory, in the order of the list; within a directory they
/// are in the order in which the system gives them, and "." and ".." are
/// entries like any other. A directory that cannot be opened is left out, and
/// an expression that is none matches nothing; neither is reported.
///
/// The elements are those of the last recalc, which changing the list or the
/// expression includes; the file system is not watched. To streams it is an
/// fxStrArray: neither the list nor the expression is transcribed.
///
/// Deliberate: it is the first match of the expression that must be the whole
/// name, and not the longest, so that "a|ab" does not select "ab".
class FX_EXPORT fxSearchList : public fxStrArray {
public:
    /// Finds the files in the directories of `searchList` that match `regexp`;
    /// null is an empty text. Does not look if the list is empty.
    fxSearchList(const char* searchList, const char* regexp);
    ~fxSearchList() override;

    /// Looks in other directories. Does nothing if the list is the same.
    void searchList(const char* list);
    /// Looks for other names. Does nothing if the expression is the same.
    void regexp(const char* expr);
    /// Both at once; looks once, and only if either is another.
    void searchCriteria(const char* list, const char* expr);
    /// Replaces the elements by what is there now. The cost is that of reading
    /// the directories and of one search in each name.
    void recalc();

    /// The directories, separated by ":".
    const fxStr& searchList() const { return searchListStr; }
    /// The expression for the names.
    const fxStr& regexp() const { return regexpStr; }

private:
    friend struct fxSearchListLayout;  // tests/str/fxSearchList_test.cpp

    bool replaceList(const char* list);
    bool replaceExpression(const char* expr);

    fxStr regexpStr;      // for the names
    fxStr searchListStr;  // directories, separated by ":"
};
