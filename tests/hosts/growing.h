// growing.h - makes everything that grows block by block grow, and looks at what it holds.
#pragma once

#include <cstdio>
#include <string>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/str/fxTempStr.h"

namespace growing {

const unsigned int rounds = 500;

inline bool isText(const fxStr& s, const std::string& text) {
    return std::string(s.c_str(), s.length()) == text;
}

/// The letter of a round.
inline char letterOf(unsigned int i) { return static_cast<char>('a' + i % 26); }

inline bool strings() {
    fxStr byBytes, byTexts, inserted, resized;
    std::string bytes, texts, front;
    for (unsigned int i = 0; i < rounds; ++i) {
        byBytes.append(letterOf(i));
        bytes += letterOf(i);
        const std::string text(i % 40, letterOf(i));
        byTexts.append(text.c_str());
        texts += text;
        inserted.insert(letterOf(i), 0);
        front.insert(front.begin(), letterOf(i));
        resized.resize(i);
        resized.setMaxLength(2 * i);
        if (!isText(byBytes, bytes) || !isText(byTexts, texts) || !isText(inserted, front) ||
            resized.length() != i)
            return false;
    }
    fxStr printed;
    printed.format("%s%300d", texts.c_str(), 7);
    return isText(printed, texts + std::string(299, ' ') + "7");
}

inline bool temporaries() {
    fxStr joined;
    std::string expected;
    for (unsigned int i = 0; i < rounds; ++i) {
        joined = joined | "," | fxStr(static_cast<int>(i), nullptr) | ";";
        expected += "," + std::to_string(i) + ";";
    }
    return isText(joined, expected);
}

inline bool stackBuffers() {
    fxStackBuffer buffer(7);
    std::string expected;
    for (unsigned int i = 0; i < 10 * rounds; ++i) {
        buffer.addc(letterOf(i));
        expected += letterOf(i);
    }
    buffer.put(expected.c_str(), static_cast<unsigned int>(expected.size()));
    const fxStackBuffer copy(buffer);
    return std::string(copy.getBase(), copy.length()) == expected + expected;
}

inline bool arrays() {
    fxIntArray appended, inserted;
    fxStrArray texts;
    for (unsigned int i = 0; i < rounds; ++i) {
        const int value = static_cast<int>(i);
        appended.append(&value);
        inserted.insert(&value, 0);
        texts.append(std::to_string(i + 1000).c_str());
    }
    appended.append(inserted);
    const fxIntArray copy(appended);
    texts.qsort();
    for (unsigned int i = 0; i < rounds; ++i) {
        const int value = static_cast<int>(i);
        if (copy[i] != value || copy[2 * rounds - 1 - i] != value ||
            !isText(texts[i], std::to_string(i + 1000)))
            return false;
    }
    return true;
}

inline bool tables() {
    fxStrStrDictionary dictionary;
    fxStrSet set;
    for (unsigned int i = 0; i < rounds; ++i) {
        const fxStr key(static_cast<int>(i), nullptr);
        dictionary.findCreate(key) = key | " and more";
        set.add(key);
    }
    for (unsigned int i = 0; i < rounds; i += 2) {
        const fxStr key(static_cast<int>(i), nullptr);
        dictionary.remove(key);
        set.remove(key);
    }
    for (unsigned int i = 0; i < rounds; ++i) {
        const fxStr key(static_cast<int>(i), nullptr);
        const fxStr* value = dictionary.find(key);
        const bool isThere = i % 2 != 0;
        if ((value != nullptr) != isThere || set.contains(key) != isThere ||
            (value && !isText(*value, std::to_string(i) + " and more")))
            return false;
    }
    return true;
}

/// 0 when everything holds what it should; otherwise says what does not.
inline int failures() {
    const struct {
        const char* name;
        bool (*holds)();
    } cases[] = {{"strings", strings},
                 {"temporaries", temporaries},
                 {"stack buffers", stackBuffers},
                 {"arrays", arrays},
                 {"tables", tables}};
    int count = 0;
    for (const auto& c : cases) {
        if (c.holds())
            continue;
        std::fprintf(stderr, "%s do not hold what was put into them\n", c.name);
        ++count;
    }
    return count;
}

}  // namespace growing
