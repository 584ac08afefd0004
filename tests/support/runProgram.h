// runProgram.h - running a built program on files in a temporary folder.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/// The bytes of a file; a file that cannot be read fails the test.
inline std::string bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.good()) << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// A folder that is removed, with its contents, at the end.
class TemporaryFolder {
public:
    TemporaryFolder() : folder(testing::TempDir() + "kelvofxds.XXXXXX") {
        EXPECT_NE(nullptr, ::mkdtemp(&folder[0]));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    const std::string& path() const { return folder; }
    /// The path of the file `name` in the folder.
    std::string operator/(const std::string& name) const { return folder + "/" + name; }
    /// Writes `bytes` to the file `name`, whose folders are made, and returns its path.
    std::string file(const std::string& name, const std::string& bytes) const {
        const std::filesystem::path path = *this / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
        return path.string();
    }

private:
    std::string folder;
};

/// What a program left behind when it ended.
struct ProgramResult {
    int status;  ///< Exit status, or 128 and more when a signal ended it.
    std::string out;
    std::string err;

    std::vector<std::string> lines() const {
        std::vector<std::string> all;
        std::istringstream in(out);
        for (std::string line; std::getline(in, line);)
            all.push_back(line);
        return all;
    }
    std::string lastLine() const { return lines().empty() ? "" : lines().back(); }
    bool hasLine(const std::string& wanted) const {
        for (const std::string& line : lines()) {
            if (line == wanted)
                return true;
        }
        return false;
    }
};

/// What has been written to a terminal whose other end is `master`, and not
/// been read yet. It arrives little by little, in the end `last`.
inline std::string shownBy(int master, const std::string& last) {
    const int patience = 5000, afterwards = 200;  // milliseconds
    std::string shown;
    for (;;) {
        const bool isLast = shown.size() >= last.size() &&
                            shown.compare(shown.size() - last.size(), last.size(), last) == 0;
        pollfd readable = {master, POLLIN, 0};
        if (::poll(&readable, 1, isLast ? afterwards : patience) <= 0)
            return shown;
        char bytes[1000];
        const ssize_t n = ::read(master, bytes, sizeof bytes);
        if (n <= 0)
            return shown;
        shown.append(bytes, static_cast<std::size_t>(n));
    }
}

/// A program and the circumstances in which it is run.
struct Program {
    explicit Program(const char* program) : path(program) {}

    std::string path;
    std::string workingFolder;    ///< Empty for the present one.
    std::string temporaryFolder;  ///< TMPDIR; empty to leave it as it is.
    int standardError = -1;       ///< A descriptor to use; otherwise it is collected.

    /// Runs it and waits for its end.
    ProgramResult run(const std::vector<std::string>& arguments) const {
        const TemporaryFolder folder;
        const std::string out = folder.file("out", "");
        const std::string err = folder.file("err", "");
        const pid_t child = ::fork();
        if (child == 0)
            become(arguments, out, err);
        int status = 0;
        EXPECT_EQ(child, ::waitpid(child, &status, 0));
        const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return {code, bytesOf(out), withoutEmulator(bytesOf(err))};
    }

private:
    // An emulator adds a line of its own when its program ends by a signal. wordindex hands on what
    // its child has said as one line, with a question mark for each other byte.
    static std::string withoutEmulator(std::string err) {
#ifdef KELVOFXDS_EMULATOR
        const std::size_t found = err.rfind("qemu: uncaught target signal ");
        if (found != std::string::npos) {
            const bool isLine = found == 0 || err[found - 1] == '\n';
            const std::size_t start = isLine ? found : found - 1;
            err.erase(start, err.find('\n', start) + (isLine ? 1 : 0) - start);
        }
#endif
        return err;
    }

    // What it is run by if it is not made for this machine, as the system's programs are.
    std::vector<const char*> emulator() const {
#ifdef KELVOFXDS_EMULATOR
        if (path.compare(0, 5, "/bin/") != 0 && path.compare(0, 5, "/usr/") != 0)
            return {KELVOFXDS_EMULATOR};
#endif
        return {};
    }

    // Only what is safe after a fork.
    [[noreturn]] void become(const std::vector<std::string>& arguments, const std::string& out,
                             const std::string& err) const {
        std::vector<char*> argv;
        for (const char* word : emulator())
            argv.push_back(const_cast<char*>(word));
        argv.push_back(const_cast<char*>(path.c_str()));
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::dup2(::open(out.c_str(), O_WRONLY), STDOUT_FILENO);
        ::dup2(standardError >= 0 ? standardError : ::open(err.c_str(), O_WRONLY), STDERR_FILENO);
        if (!temporaryFolder.empty())
            ::setenv("TMPDIR", temporaryFolder.c_str(), 1);
        if (workingFolder.empty() || ::chdir(workingFolder.c_str()) == 0)
            ::execvp(argv[0], argv.data());
        ::_exit(127);
    }
};

/// The shell, and the arguments to give it to run `script`, in which "$@" stands for `program`.
inline const char* const theShell = "/bin/sh";
inline std::vector<std::string> argumentsForScript(const std::string& script,
                                                   const std::string& program) {
    std::vector<std::string> arguments = {"-c", script, "sh"};
#ifdef KELVOFXDS_EMULATOR
    arguments.insert(arguments.end(), {KELVOFXDS_EMULATOR});
#endif
    arguments.push_back(program);
    return arguments;
}
