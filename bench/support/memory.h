// memory.h - how much memory a piece of work takes at its peak.
#pragma once

#include <malloc.h>

#include <cstdio>
#include <cstring>

/// Watches the process's resident memory from its construction on. The unit is
/// MiB; 0 where the system does not tell.
class PeakMemory {
public:
    PeakMemory() {
        ::malloc_trim(0);  // memory that is only kept for later counts as free
        if (std::FILE* file = std::fopen("/proc/self/clear_refs", "w")) {
            std::fputs("5", file);  // the peak becomes the present size
            std::fclose(file);
        }
        start = kibibytes("VmRSS:");
    }

    double taken() const { return (kibibytes("VmHWM:") - start) / 1024; }

private:
    static double kibibytes(const char* field) {
        double value = 0;
        char line[256];
        std::FILE* file = std::fopen("/proc/self/status", "r");
        while (file && std::fgets(line, sizeof line, file)) {
            if (std::strncmp(line, field, std::strlen(field)) == 0)
                std::sscanf(line + std::strlen(field), "%lf", &value);
        }
        if (file)
            std::fclose(file);
        return value;
    }

    double start;
};
