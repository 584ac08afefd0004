// output.h - where views write.
#pragma once

#include <cstdio>
#include <string>

namespace fxdump {

/// What a part of the output is; each has its colour.
enum class Paint : unsigned char { plain, place, name, number, text, remark, bad };

/// Text to a file, with colours where these are wanted.
class Output {
public:
    Output(std::FILE* f, bool isColoured) : file(f), colours(isColoured) {}

    void put(const std::string& text) { std::fwrite(text.data(), 1, text.size(), file); }
    /// `text` with the colour of `paint` around it.
    std::string painted(Paint paint, const std::string& text) const;
    /// Gives all to the file; false if that took any of it not.
    bool flush() { return std::fflush(file) == 0 && !failed(); }
    bool failed() const { return std::ferror(file) != 0; }

private:
    std::FILE* file;
    const bool colours;
};

/// `text` with blanks behind it, `width` characters in all.
std::string padded(const std::string& text, std::size_t width);
/// The same with the blanks before it.
std::string rightAligned(const std::string& text, std::size_t width);

}  // namespace fxdump
