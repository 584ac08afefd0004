// dying.h - how a test program ends by a signal.
#pragma once

/// Lets SIGABRT end this process, whatever a parent has made of it. With standard error to the last
/// what the process has written itself: an emulator, which adds a line of its own, is kept from it.
void letAbortEndUs();
