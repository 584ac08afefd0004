// guarded.h - work that may end the process it runs in.
#pragma once

#include <functional>
#include <string>

/// Runs `task` in a process of its own and returns what it returns, a number from 0 to 127. When
/// that process is ended by a signal, the last it said is passed to `onDeath` instead of standard
/// error, and the result is 1.
int runGuarded(const std::function<int()>& task,
               const std::function<void(const std::string&)>& onDeath);
