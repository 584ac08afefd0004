// dump.h - showing a stream in one of the ways there are.
#pragma once

#include <memory>
#include <string>

#include "tools/fxdump/options.h"
#include "tools/fxdump/output.h"
#include "tools/fxdump/source.h"
#include "tools/fxdump/view.h"

namespace fxdump {

/// How a stream was; also the exit status of the program.
enum Outcome : int { isSound = 0, isDamaged = 1, isTrouble = 2 };

/// Shows streams as the options say.
class Dump {
public:
    Dump(const Options& o, Output& to);

    /// Shows a stream. `message` becomes what has to be said beside the output, in
    /// one line; "" if there is nothing.
    Outcome show(Source& source, const std::string& file, std::string& message);
    /// Behind the last stream.
    void finish();

private:
    Outcome verify(Source& source, const std::string& file, std::string& message);

    const Options options;
    Output& out;
    std::unique_ptr<View> view;  // null where there are only verdicts
};

}  // namespace fxdump
