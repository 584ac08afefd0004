#include "kelvofxds/str/fxPath.h"

#include <climits>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxPlatform.h"

int fxPath::split(fxPath* directory, fxPath* leaf) const {
    FX_CHECK_NOT_NULL("fxPath", directory);
    FX_CHECK_NOT_NULL("fxPath", leaf);
    // The function is told how many bytes of text there is room for, beside
    // the NUL. It writes into strings of one byte more, which are never empty
    // and so never share their buffer.
    const unsigned int length = static_cast<unsigned int>(std::strlen(c_str()));
    const int room = length < INT_MAX ? static_cast<int>(length) : INT_MAX;
    fxStr directoryText(length + 1);
    fxStr leafText(length + 1);
    const int status = fileutl_strip_leaf(c_str(), room, &directoryText[0u], room, &leafText[0u]);
    directory->fxStr::operator=(directoryText.c_str());
    leaf->fxStr::operator=(leafText.c_str());
    return status;
}

fxPath fxPath::leaf() const {
    fxPath scratch, leaf;
    split(&scratch, &leaf);
    return leaf;
}

fxPath fxPath::directory() const {
    fxPath directory, scratch;
    split(&directory, &scratch);
    return directory;
}
