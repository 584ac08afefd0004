// recordingTranscriber.h - a transcriber that notes every call made on it.
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// One call: the parameter types of the overload, and its arguments. The
/// embedded-object form has its third argument in `address`.
struct TranscriberCall {
    std::string operation;
    const void* address;
    unsigned int n;
    const fxTypeObj* type;
    const void* previous;
};

/// Writing, it collects the bytes of scalars and of blocks of chars; reading,
/// it hands out such bytes, allocating blocks with malloc as strings need it.
/// A call fails when it is the one numbered `failAt` or the bytes run out.
class RecordingTranscriber : public fxTranscriber {
public:
    enum Direction { writer, reader };
    static constexpr unsigned int never = 0xFFFFFFFF;

    explicit RecordingTranscriber(Direction direction, const std::string& input = "")
        : failAt(never), success(1), bytes(input), used(0) {
        reading = direction == reader;
    }

    std::vector<TranscriberCall> calls;
    unsigned int failAt;    // index in `calls`
    unsigned char success;  // what a call returns that does not fail
    std::string bytes;      // written, or to be read
    std::size_t used;       // bytes read

    /// Adds a number to the bytes to be read.
    template <class Number>
    RecordingTranscriber& give(Number number) {
        bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
        return *this;
    }

    /// Adds what reading an fxStr takes: its length with the NUL and, unless
    /// it is empty, its text.
    RecordingTranscriber& giveStr(const std::string& text) {
        give(static_cast<unsigned int>(text.size() + 1));
        if (!text.empty())
            bytes.append(text.c_str(), text.size() + 1);
        return *this;
    }

    /// The calls as "operation n", separated by blanks.
    std::string log() const {
        std::string text;
        for (const TranscriberCall& call : calls)
            text += (text.empty() ? "" : " ") + call.operation + ":" + std::to_string(call.n);
        return text;
    }

    void reset() override {}

    unsigned char xdr(char* p, unsigned int n) override { return scalar("char*", p, n); }
    unsigned char xdr(unsigned char* p, unsigned int n) override { return scalar("uchar*", p, n); }
    unsigned char xdr(short* p, unsigned int n) override { return scalar("short*", p, n); }
    unsigned char xdr(unsigned short* p, unsigned int n) override {
        return scalar("ushort*", p, n);
    }
    unsigned char xdr(long* p, unsigned int n) override { return scalar("long*", p, n); }
    unsigned char xdr(unsigned long* p, unsigned int n) override { return scalar("ulong*", p, n); }
    unsigned char xdr(float* p, unsigned int n) override { return scalar("float*", p, n); }
    unsigned char xdr(double* p, unsigned int n) override { return scalar("double*", p, n); }
    unsigned char xdr(int* p, unsigned int n) override { return scalar("int*", p, n); }
    unsigned char xdr(unsigned int* p, unsigned int n) override { return scalar("uint*", p, n); }
    unsigned char xdr(fxStr* p, unsigned int n) override { return note("fxStr*", p, n); }

    unsigned char xdr(char** block, unsigned int n) override {
        if (!note("char**", block, n))
            return 0;
        if (!isReading()) {
            bytes.append(*block, n);
            return success;
        }
        if (bytes.size() - used < n)
            return 0;
        *block = static_cast<char*>(std::malloc(n));
        std::memcpy(*block, bytes.data() + used, n);
        used += n;
        return success;
    }
    unsigned char xdr(unsigned char** p, unsigned int n) override { return note("uchar**", p, n); }
    unsigned char xdr(short** p, unsigned int n) override { return note("short**", p, n); }
    unsigned char xdr(unsigned short** p, unsigned int n) override {
        return note("ushort**", p, n);
    }
    unsigned char xdr(long** p, unsigned int n) override { return note("long**", p, n); }
    unsigned char xdr(unsigned long** p, unsigned int n) override { return note("ulong**", p, n); }
    unsigned char xdr(float** p, unsigned int n) override { return note("float**", p, n); }
    unsigned char xdr(double** p, unsigned int n) override { return note("double**", p, n); }
    unsigned char xdr(int** p, unsigned int n) override { return note("int**", p, n); }
    unsigned char xdr(unsigned int** p, unsigned int n) override { return note("uint**", p, n); }
    unsigned char xdr(char** text) override { return note("text", text, 0); }
    unsigned char xdr(unsigned char** text) override { return note("utext", text, 0); }

    unsigned char xdr(void* field, fxXDRObj*, fxTypeObj& type, fxXDRObj*, void*) override {
        return note("pointer", field, 0, &type);
    }
    unsigned char xdr(fxTypeObj& type, void* previous, void* address) override {
        return note("embedded", address, 0, &type, previous);
    }

    void* readObject(fxTypeObj& type) override {
        note("readObject", nullptr, 0, &type);
        return nullptr;
    }
    unsigned char writeObject(void* address, fxXDRObj*) override {
        return note("writeObject", address, 0);
    }
    const char* className() const override { return "RecordingTranscriber"; }

private:
    unsigned char note(const char* operation, const void* address, unsigned int n,
                       const fxTypeObj* type = nullptr, const void* previous = nullptr) {
        calls.push_back({operation, address, n, type, previous});
        return calls.size() - 1 == failAt ? 0 : success;
    }

    template <class Number>
    unsigned char scalar(const char* operation, Number* numbers, unsigned int n) {
        if (!note(operation, numbers, n))
            return 0;
        const std::size_t size = n * sizeof *numbers;
        if (!isReading()) {
            bytes.append(reinterpret_cast<const char*>(numbers), size);
            return success;
        }
        if (bytes.size() - used < size)
            return 0;
        if (size != 0)
            std::memcpy(numbers, bytes.data() + used, size);
        used += size;
        return success;
    }
};
