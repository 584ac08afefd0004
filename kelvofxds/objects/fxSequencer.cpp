#include "kelvofxds/objects/fxSequencer.h"

#include "kelvofxds/containers/fxArrayFamilyInternal.h"

fxSequencer* fx_nextDataType = nullptr;
fxSequencer* fx_nextEventType = nullptr;

FX_DEFINE_ARRAY(fxSeqRangeArray, fxSeqRange)
FX_DEFINE_ARRAY(fxStubFuncArray, fxStubFuncArray::Function)

namespace {
unsigned int endOf(const fxSeqRange& range) { return range.start + range.count; }
}  // namespace

fxSequencer::fxSequencer() {}

fxSequencer::~fxSequencer() {}

unsigned int fxSequencer::operator()() {
    if (ranges.length() == 0) {
        const fxSeqRange first = {0, 1};
        ranges.append(&first);
        return 0;
    }
    fxSeqRange& range = ranges[0];
    if (range.start > 0) {
        ++range.count;
        return --range.start;
    }
    const unsigned int result = range.count++;
    trymerge(0);
    return result;
}

unsigned int fxSequencer::operator()(unsigned int n) {
    const unsigned int length = ranges.length();
    unsigned int i = 0;
    while (i < length && ranges[i].start <= n)
        ++i;
    const bool followsLeft = i > 0 && endOf(ranges[i - 1]) == n;
    if (i < length && n == ranges[i].start - 1) {
        --ranges[i].start;
        ++ranges[i].count;
    } else if (i < length && followsLeft) {
        ++ranges[i - 1].count;
    } else {
        const fxSeqRange range = {n, 1};
        if (i == length)
            ranges.append(&range);
        else
            ranges.insert(&range, i);
    }
    if (i > 0)
        trymerge(i - 1);
    return n;
}

void fxSequencer::trymerge(unsigned int i) {
    if (i + 1 >= ranges.length() || endOf(ranges[i]) != ranges[i + 1].start)
        return;
    ranges[i].count += ranges[i + 1].count;
    ranges.remove(i + 1, 1);
}
