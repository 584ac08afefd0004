// A program with a loop, streams and files, each of whose system calls is interrupted in turn.

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <set>
#include <string>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/str/fxSearchList.h"
#include "kelvofxds/transcribe/fxFile.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/figure.h"
#include "tests/support/inChild.h"
#include "tests/support/runProgram.h"
#include "tests/support/savedBook.h"

// The registers of other machines have other names.
#ifdef __i386__

namespace {

const unsigned int people = 300;  // more than a buffer

// What the host's own calls are made by.
template <class Call>
ssize_t persistently(Call call) {
    ssize_t result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

// The loop: a text goes through a pipe, piece by piece, while a timer ticks.

const std::string text = "Sphinx of black quartz, judge my vow, and then do it once more for me.";
const std::size_t piece = 2;

class Source : public fxSelectHandler {
public:
    explicit Source(int descriptor) : fxSelectHandler(descriptor, 0, 1, 0) {}
    void handleRead() override {}
    // Where it is interrupted it is called again.
    void handleWrite() override {
        const ssize_t n = ::write(fd, text.data() + sent, std::min(piece, text.size() - sent));
        sent += n > 0 ? static_cast<std::size_t>(n) : 0;
        if (sent == text.size())
            fx_theExecutive->removeSelectHandler(this);
    }

    std::size_t sent = 0;
};

class Sink : public fxSelectHandler {
public:
    explicit Sink(int descriptor) : fxSelectHandler(descriptor, 1, 0, 0) {}
    void handleRead() override {
        char bytes[piece];
        const ssize_t n = ::read(fd, bytes, sizeof bytes);
        received.append(bytes, n > 0 ? static_cast<std::size_t>(n) : 0);
    }

    std::string received;
};

class Transfer : public fxApplication {
public:
    explicit Transfer(const int (&ends)[2]) : timer(1), source(ends[1]), sink(ends[0]) {
        fx_theExecutive->addSelectHandler(&source);
        fx_theExecutive->addSelectHandler(&sink);
        fxOnInput(this, "tick", [this] {
            if (++ticks >= 3 && sink.received == text)
                close();
        });
        timer.connect("tick", this, "tick");
        timer.setInterval(0.01F);
        timer.startTimer();
    }
    ~Transfer() override { fx_theExecutive->removeSelectHandler(&sink); }
    void initialize(int, char**) override {}

    unsigned int ticks = 0;
    fxTimer timer;
    Source source;
    Sink sink;
};

std::string transferred() {
    int ends[2];
    if (::pipe(ends) != 0)
        return "no pipe";
    Transfer transfer(ends);
    fx_theExecutive->loop();
    return transfer.sink.received;
}

// Streams and files.

// A writer is told of what is lost, and makes the file anew.
void writeByStream(const std::string& path) {
    SavedBook book;
    book.fill(people, 1);
    for (bool isSaved = false; !isSaved;) {
        fxStdioStream* const file = fxStdioStream::createFile(path.c_str());
        ++file->count;
        fxTranscriber::changeDefaultWriter(makeGraphWriter);
        const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(file));
        fxTranscriber::resetToDefaultWriter();
        isSaved = writer && writer->writeObject(&book, &book);
        isSaved = file->close() && isSaved;
        if (--file->count == 0)
            delete file;
    }
}

std::string bookFrom(fxStdioStream* stream) {
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(stream));
    auto* book = reader ? static_cast<SavedBook*>(reader->readObject(SavedBook_type)) : nullptr;
    const std::unique_ptr<SavedBook> owned(book);
    return book ? book->text() : "unread";
}

// What the host reads itself.
std::string contentOf(const std::string& path) {
    const auto fd = static_cast<int>(persistently([&] { return ::open(path.c_str(), O_RDONLY); }));
    std::string content;
    char bytes[4096];
    for (ssize_t n; (n = persistently([&] { return ::read(fd, bytes, sizeof bytes); })) > 0;)
        content.append(bytes, static_cast<std::size_t>(n));
    ::close(fd);
    return content;
}

// The file's bytes come in as many messages as it takes for many reads.
std::string readInPieces(const std::string& path) {
    const std::string bytes = contentOf(path);
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0)
        return "no sockets";
    const std::size_t n = bytes.size() / 80 + 1;
    for (std::size_t at = 0; at < bytes.size(); at += n) {
        const std::string part = bytes.substr(at, n);
        persistently([&] { return ::write(ends[1], part.data(), part.size()); });
    }
    ::close(ends[1]);
    return bookFrom(new fxStdioStream(ends[0], fxStream::readStream));
}

std::string savedAndLoaded(const std::string& path) {
    SavedBook book;
    book.fill(people, 2);
    fxStr why;
    if (!fxSaveFile(path.c_str(), book, &why))
        return why.c_str();
    const std::unique_ptr<SavedBook> loaded(fxLoadFile<SavedBook>(path.c_str(), &why));
    return loaded ? loaded->text() : why.c_str();
}

std::string namesIn(const std::string& directory) {
    std::multiset<std::string> names;
    const fxSearchList list(directory.c_str(), "[a-z]+");
    for (unsigned int i = 0; i < list.length(); ++i)
        names.insert(list[i].c_str() + directory.size());
    std::string all;
    for (const std::string& name : names)
        all += name + " ";
    return all;
}

std::string program(const std::string& directory) {
    std::string result = transferred();
    writeByStream(directory + "/written");
    result += readInPieces(directory + "/written");
    result += bookFrom(new fxStdioStream((directory + "/written").c_str(), fxStream::readStream));
    result += savedAndLoaded(directory + "/saved");
    result += savedAndLoaded(directory + "/saved");  // in place of an old one
    return result + namesIn(directory);
}

// Interruptions.

// What is done to a call: it does nothing and is said to have been interrupted, or a signal comes
// when it begins.
enum class Kind { isSaid, isSignalled };

const std::set<long> interruptible = {SYS_read,   SYS_write,      SYS_readv,    SYS_writev,
                                      SYS_open,   SYS_openat,     SYS_close,    SYS_fsync,
                                      SYS_fchmod, SYS_fchown32,   SYS_getdents, SYS_getdents64,
                                      SYS_select, SYS__newselect, SYS_pselect6};

// A child that runs the program and is stopped at each of its system calls.
class Traced {
public:
    explicit Traced(const std::string& directory) {
        EXPECT_EQ(0, ::pipe(ends));
        child = ::fork();
        if (child == 0)
            run(directory);
        ::close(ends[1]);
        ::waitpid(child, &status, 0);
        const long whole = PTRACE_O_TRACESYSGOOD;
        isTraced = WIFSTOPPED(status) && ::ptrace(PTRACE_SETOPTIONS, child, nullptr, whole) == 0;
    }
    Traced(const Traced&) = delete;
    Traced& operator=(const Traced&) = delete;
    ~Traced() { ::close(ends[0]); }

    // Interrupts the call number `at` of those that can be; false if there are not so many.
    bool interrupt(unsigned int at, Kind kind) {
        unsigned int calls = 0;
        bool isEntry = false;
        bool isLied = false;
        int passedOn = 0;
        for (;;) {
            ::ptrace(PTRACE_SYSCALL, child, nullptr, passedOn);
            passedOn = 0;
            ::waitpid(child, &status, 0);
            if (!WIFSTOPPED(status))
                return true;
            if (WSTOPSIG(status) == SIGSTOP)
                break;
            if (WSTOPSIG(status) != (SIGTRAP | 0x80)) {
                passedOn = WSTOPSIG(status);
                continue;
            }
            isEntry = !isEntry;
            if (isEntry && isInterruptible() && ++calls == at) {
                isLied = kind == Kind::isSaid;
                isLied ? begin() : static_cast<void>(::kill(child, SIGUSR1));
            } else if (!isEntry && isLied) {
                end();
                isLied = false;
            }
        }
        ::ptrace(PTRACE_DETACH, child, nullptr, nullptr);
        return calls >= at;
    }

    // What the program has printed, or how it has ended.
    std::string result() {
        std::string all;
        char bytes[4096];
        for (ssize_t n; (n = ::read(ends[0], bytes, sizeof bytes)) > 0;)
            all.append(bytes, static_cast<std::size_t>(n));
        if (WIFSTOPPED(status))
            ::waitpid(child, &status, 0);
        return WIFSIGNALED(status) ? "ended by signal " + std::to_string(WTERMSIG(status)) : all;
    }

    bool isTraced = false;

private:
    [[noreturn]] void run(const std::string& directory) const {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGUSR1, &action, nullptr);
        ::alarm(20);  // one that hangs
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(2);
        ::raise(SIGSTOP);
        const std::string printed = program(directory);
        ::raise(SIGSTOP);
        const ssize_t n = ::write(ends[1], printed.data(), printed.size());
        ::_exit(n == static_cast<ssize_t>(printed.size()) ? 0 : 1);
    }

    user_regs_struct registers() const {
        user_regs_struct all;
        ::ptrace(PTRACE_GETREGS, child, nullptr, &all);
        return all;
    }

    bool isInterruptible() const { return interruptible.count(registers().orig_eax) != 0; }

    // A descriptor is closed all the same, as the system's close has it.
    void begin() const {
        user_regs_struct all = registers();
        if (all.orig_eax == SYS_close)
            return;
        all.orig_eax = -1;
        ::ptrace(PTRACE_SETREGS, child, nullptr, &all);
    }

    void end() const {
        user_regs_struct all = registers();
        all.eax = -EINTR;
        ::ptrace(PTRACE_SETREGS, child, nullptr, &all);
    }

    int ends[2];
    pid_t child;
    int status = 0;
};

}  // namespace

TEST(figureI5, interruptedProgramsPrintTheSame) {
    fxInitializeToolkit();
    const auto step = static_cast<unsigned int>(figureSize(1, 25));
    std::string undisturbed;
    {
        const TemporaryFolder folder;
        undisturbed = inChild([&] { return program(folder.path()); });
    }
    unsigned int points = 0;
    unsigned int wrong = 0;
    for (const Kind kind : {Kind::isSaid, Kind::isSignalled}) {
        for (unsigned int at = 1;; at += step) {
            const TemporaryFolder folder;
            Traced traced(folder.path());
            if (!traced.isTraced)
                GTEST_SKIP() << "children cannot be traced here";
            const bool isInterrupted = traced.interrupt(at, kind);
            const bool isSame = traced.result() == undisturbed;
            EXPECT_TRUE(isSame) << (kind == Kind::isSaid ? "call " : "signal ") << at;
            wrong += isSame ? 0 : 1;
            if (!isInterrupted)
                break;
            points += kind == Kind::isSaid ? 1 : 0;
        }
    }
    const unsigned int least = 200 / step;
    reportFigure("I5", std::to_string(points) + ";" + std::to_string(wrong),
                 std::to_string(least) + ";0", points >= least && wrong == 0);
}

#endif
