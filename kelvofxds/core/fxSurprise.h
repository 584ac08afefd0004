// fxSurprise.h - marks of operations that surprise.
#pragma once

// Where a host defines KELVOFXDS_WARN_SURPRISES before it includes anything of the library, using a
// marked operation is a warning; else a mark is nothing. Layouts and symbols are the same either
// way.

#ifdef KELVOFXDS_WARN_SURPRISES
#define FX_SURPRISING(text) [[deprecated(text)]]
#define FX_TAKES_ADDRESS [[gnu::nonnull(2)]]
#else
/// FX_SURPRISING("what it does: what to write instead") stands in front of an operation that does
/// something else than its name says to a newcomer. The warning has that text.
#define FX_SURPRISING(text)
/// FX_TAKES_ADDRESS stands in front of a member function whose first argument is an address that
/// leads somewhere. A 0 that is meant as a number is one that does not; compilers warn of it then
/// as of any null (-Wnonnull, a part of -Wall).
#define FX_TAKES_ADDRESS
#endif
