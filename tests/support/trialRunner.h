// trialRunner.h - trying many inputs of which any may end the process.
#pragma once

#include <functional>
#include <string>
#include <vector>

/// What a child may make resident beyond an idle one, in KiB: 64 MiB, and under
/// a sanitizer more for the sanitizer's sake.
extern const long trialMemoryLimit;

/// How a series of trials went.
struct TrialReport {
    unsigned int values = 0;            ///< Trials that returned true.
    unsigned int nulls = 0;             ///< Trials that returned false.
    unsigned int fatals = 0;            ///< Trials that ended in a stated message.
    std::vector<std::string> failures;  ///< The others, and what became of them.
    long growth = 0;                    ///< Most memory that trials made resident, in KiB.

    unsigned int trials() const {
        return values + nulls + fatals + static_cast<unsigned int>(failures.size());
    }
};

/// Far more processor time than is taken by the trials of a child that come to an end. Where the
/// library counts what of it is run, they take longer.
#ifdef KELVOFXDS_COVERAGE
const unsigned int trialSeconds = 60;
#else
const unsigned int trialSeconds = 20;
#endif

/// Runs trial(0) to trial(n - 1) in child processes, one after the other.
///
/// A child makes `batch` trials, or fewer if one of them ends it; it is then
/// expected to have died by SIGABRT behind a message that `isStated` accepts.
/// Any other end is a failure, as are an exception, a trial that takes longer
/// than `seconds` of processor time and a child that exceeds trialMemoryLimit. Stops at ten
/// failures.
TrialReport runTrials(unsigned int n, const std::function<bool(unsigned int)>& trial,
                      const std::function<bool(const std::string&)>& isStated,
                      unsigned int batch = 256, unsigned int seconds = trialSeconds);
