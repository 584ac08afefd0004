// version.h - which version of the library these headers belong to, for the preprocessor.
#pragma once

/// Grows when hosts have to be changed.
#define KELVOFXDS_VERSION_MAJOR 0
/// Grows when something is added.
#define KELVOFXDS_VERSION_MINOR 1
/// Grows when something is put right.
#define KELVOFXDS_VERSION_PATCH 0

/// The three as text, with dots. That of the library which is loaded may be
/// another: libkelvofxds_print_verid in <kelvofxds/core/fxVersion.h> tells it.
#define KELVOFXDS_VERSION "0.1.0"

/// The three as one number that grows with them, two digits each:
/// `#if KELVOFXDS_VERSION_NUMBER >= 100` asks for 0.1.0 or later.
#define KELVOFXDS_VERSION_NUMBER \
    (KELVOFXDS_VERSION_MAJOR * 10000 + KELVOFXDS_VERSION_MINOR * 100 + KELVOFXDS_VERSION_PATCH)
