// follow - shows what is appended to files. `follow --help` lists the options.
//
//   fxTimer "tick" --void--> "look"  Follower, one for each file
//   Follower "line" --text-> "line"  Filter, or Printer without a pattern
//   Filter "line" ----text-> "line"  Printer
//   Printer "done" ---void-> "end"   Follow
//   Ending "end" -----void-> "end"   Follow

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "examples/follow/stages.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/objects/fxWiring.h"

namespace {

const char usage[] =
    "usage: follow [-a] [-n LINES] [-p PATTERN] [-s SECONDS] FILE...\n"
    "\n"
    "Shows the lines that are appended to files, until it is interrupted. A file that is\n"
    "not there is waited for.\n"
    "\n"
    "  -a  shows what is in the files already, too\n"
    "  -n  ends after that many lines\n"
    "  -p  shows lines in which the regular expression is found, and no others\n"
    "  -s  looks that often; every quarter of a second without the option\n"
    "\n"
    "The exit status is 0, and 2 when the arguments make no sense.\n";

struct Options {
    bool fromStart = false;
    unsigned int lines = 0;
    const char* pattern = nullptr;
    float seconds = 0.25F;
};

/// Wires everything together, and ends when it is told to.
class Follow : public fxApplication {
public:
    Follow(const Options& options, const std::vector<const char*>& paths);

    void initialize(int, char**) override {}
    void open() override;

    bool makesSense() const { return !filter || filter->isPattern(); }

private:
    std::vector<std::unique_ptr<Follower>> followers;
    std::unique_ptr<Filter> filter;
    Printer printer;
    Ending ending;
    fxTimer timer;
};

Follow::Follow(const Options& options, const std::vector<const char*>& paths)
    : printer(options.lines), timer(1) {
    fxAddInput(this, "end", &Follow::close);
    printer.connect("done", this, "end");
    ending.connect("end", this, "end");
    fxObj* next = &printer;
    if (options.pattern) {
        filter = std::make_unique<Filter>(options.pattern);
        filter->connect("line", next, "line");
        next = filter.get();
    }
    for (const char* path : paths) {
        const std::string prefix = paths.size() > 1 ? std::string(path) + ": " : "";
        followers.push_back(std::make_unique<Follower>(path, options.fromStart, prefix));
        followers.back()->connect("line", next, "line");
        timer.connect("tick", followers.back().get(), "look");
    }
    timer.setInterval(options.seconds);
}

void Follow::open() {
    fxApplication::open();
    for (const auto& follower : followers)
        follower->look();
    timer.startTimer();
}

// False when they make no sense.
bool take(Options& options, int argc, char** argv) {
    for (int option; (option = ::getopt(argc, argv, "+an:p:s:")) != -1;) {
        char* end = nullptr;
        if (option == 'a') {
            options.fromStart = true;
        } else if (option == 'n') {
            options.lines = static_cast<unsigned int>(std::strtoul(optarg, &end, 10));
        } else if (option == 'p') {
            options.pattern = optarg;
        } else if (option == 's') {
            options.seconds = std::strtof(optarg, &end);
        } else {
            return false;
        }
        if (end && (end == optarg || *end != '\0'))
            return false;
    }
    return options.seconds > 0 && optind < argc;
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usage, stdout);
        return 0;
    }
    Options options;
    if (!take(options, argc, argv)) {
        std::fputs(usage, stderr);
        return 2;
    }
    {
        Follow follow(options, std::vector<const char*>(argv + optind, argv + argc));
        if (!follow.makesSense()) {
            std::fprintf(stderr, "follow: \"%s\" is no regular expression\n", options.pattern);
            follow.close();
            return 2;
        }
        fx_theExecutive->open();
        fx_theExecutive->loop();
    }
    fxCleanupGlobalOrderings();
    return 0;
}
