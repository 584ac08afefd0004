// dying.h - how a test program ends by a signal.
#pragma once

/// Lets `signal` end this process, whatever a parent or a checker has made of it. Standard error
/// has what the process has written and no more: an emulator is kept from adding a line of its own.
void letEndUs(int signal);
