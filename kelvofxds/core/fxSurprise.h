// fxSurprise.h - marks of operations that surprise.
#pragma once

/// FX_SURPRISING("what it does: what to write instead") stands in front of an operation that does
/// something else than its name says to a newcomer. Where a host defines KELVOFXDS_WARN_SURPRISES
/// before it includes anything of the library, using one is a warning with that text; else the
/// mark is nothing. Layouts and symbols are the same either way.
#ifdef KELVOFXDS_WARN_SURPRISES
#define FX_SURPRISING(text) [[deprecated(text)]]
#else
#define FX_SURPRISING(text)
#endif
