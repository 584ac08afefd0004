// fxInProgressInternal.h - walks that are told what happens to what they walk over.
#pragma once

/// The base of a walk over something that the walk's own calls may change: the
/// walks of one kind that are in progress know of each other, so that whoever
/// changes the thing can tell them. `class Walk : public fxInProgress<Walk>`.
///
/// Walks are local variables, so they end in the reverse order of their
/// beginnings, also when a host's exception passes through. Each thread has its
/// own: a host may use separate containers in separate threads. Nothing is
/// allocated, neither by a walk nor by the loader (the initial-exec model).
template <class Walk>
class __attribute__((visibility("hidden"))) fxInProgress {
public:
    fxInProgress(const fxInProgress&) = delete;
    fxInProgress& operator=(const fxInProgress&) = delete;

    /// Calls tell(walk) with each walk in progress, the newest first. `tell`
    /// begins and ends none.
    template <class Function>
    static void forEach(Function tell) {
#if defined(__clang__) && defined(__powerpc__)
        // A function that reaches for a thread's variable and calls nothing
        // returns into nowhere: its link register is used, but not saved.
        __asm__ volatile("" : : : "lr");
#endif
        for (fxInProgress* walk = innermost; __builtin_expect(walk != nullptr, false);
             walk = walk->outer)
            tell(static_cast<Walk&>(*walk));
    }

protected:
    fxInProgress() : outer(innermost) { innermost = this; }
    ~fxInProgress() { innermost = outer; }

private:
    // The newest.
    [[gnu::tls_model("initial-exec")]] inline static thread_local fxInProgress* innermost = nullptr;

    fxInProgress* outer;  // the one around this one
};
