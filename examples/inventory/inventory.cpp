// inventory - keeps count of things in a file. `inventory --help` says how.

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <kelvofxds/kelvofxds.h>
#include <kelvofxds/std.h>

namespace {

const char usage[] =
    "usage: inventory FILE [ITEM COUNT]...\n"
    "\n"
    "Books that COUNT of an ITEM came in, or, where it is negative, went out, and shows\n"
    "what is there. Either all of it is booked or, when something would be less than\n"
    "nothing or more than a billion, none. The exit status is 0, 1 when nothing could be\n"
    "booked, and 2 when the arguments make no sense.\n";

const int most = 1000000000;  // of an item

using Stock = fxStrStrDictionary;  // from items to their counts, in decimal

std::optional<int> numberIn(std::string_view text) {
    int number = 0;
    const auto [end, problem] = std::from_chars(text.begin(), text.end(), number);
    if (problem != std::errc() || end != text.end())
        return std::nullopt;
    return number;
}

int complain(const std::string& what) {
    std::cerr << "inventory: " << what << '\n';
    return 1;
}

int complainOfUsage() {
    std::cerr << usage;
    return 2;
}

// Null, after a complaint, when there is a file but no sound stock in it.
fxRef<Stock> loaded(const char* path) {
    if (::access(path, F_OK) != 0)
        return new Stock;
    fxStr why;
    fxRef<Stock> stock(fxLoadFile<Stock>(path, &why));
    if (!stock) {
        complain(fxString(why));
        return nullptr;
    }
    for (const auto& [item, count] : *stock) {
        const std::optional<int> number = numberIn(fxView(count));
        if (!number || *number < 0 || *number > most) {
            complain("\"" + fxString(count) + "\" is no count of " + fxString(item));
            return nullptr;
        }
    }
    return stock;
}

// The new stock, if all of the bookings are possible.
bool book(const Stock& before, Stock& after, char** bookings) {
    fxCopyInto(before, after);
    for (; *bookings; bookings += 2) {
        const fxStr item = bookings[0];
        const long long here = *numberIn(fxString(value_or(after, item, "0")));
        const long long count = here + *numberIn(bookings[1]);
        if (count < 0 || count > most) {
            complain("there are " + std::to_string(here) + " " + bookings[0]);
            return false;
        }
        after.add(item, fxStrOf(std::to_string(count)));
    }
    for (const auto& [item, count] : after) {
        if (count == "0")
            after.remove(item);  // the walk goes on behind it
    }
    return true;
}

// Most of all first, and what is equal by name.
void show(const Stock& stock) {
    std::vector<std::pair<int, std::string>> lines;
    for (const auto& [item, count] : stock)
        lines.emplace_back(-*numberIn(fxView(count)), fxString(item));
    std::sort(lines.begin(), lines.end());
    for (const auto& [negative, item] : lines)
        std::printf("%6d %s\n", -negative, item.c_str());
}

bool makesSense(int argc, char** words) {
    for (int i = 1; i < argc; i += 2) {
        if (i + 1 == argc || *words[i] == '\0' || !numberIn(words[i + 1]))
            return false;
    }
    return argc > 0;
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    if (argc == 2 && std::string_view(argv[1]) == "--help") {
        std::cout << usage;
        return 0;
    }
    if (!makesSense(argc - 1, argv + 1))
        return complainOfUsage();
    const fxRef<Stock> stock = loaded(argv[1]);
    if (!stock)
        return 1;
    Stock after;
    fxStr why;
    if (!book(*stock, after, argv + 2))
        return 1;
    if (argc > 2 && !fxSaveFile(argv[1], after, &why))
        return complain(fxString(why));
    show(after);
}
