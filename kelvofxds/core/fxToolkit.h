// fxToolkit.h - start-up and shutdown in dependency order.
#pragma once

#include "kelvofxds/containers/fxTypedArrays.h"

class fxOrderedGlobal;

/// The ordered globals of the toolkit or of the application.
///
/// Entries are not owned. Registration is O(1); sorting is O(n^2) in the
/// number of entries.
class FX_EXPORT fxGlobalOrder {
public:
    /// An empty ordering with room for 10 entries.
    fxGlobalOrder();

    /// Makes whichever of the two orderings does not exist yet.
    static void createOrderings();

    /// Makes the orderings if need be and appends `global` to the toolkit's
    /// ordering when `which` is exactly 1, to the application's otherwise.
    /// Returns the index at which it was stored.
    static int add(fxOrderedGlobal* global, int which);

    /// Appends `global` and marks the list unsorted. Returns its index.
    int add(fxOrderedGlobal* global);

    /// Puts the list in construction order.
    /// Deliberate: one pass of pairwise swaps, not a topological sort. It
    /// settles chains that the pass can settle and neither detects nor reports
    /// cycles.
    void sort();

    /// Sorts if need be, then calls every construct function in order.
    void create();

    /// Calls every destroy function, last entry first.
    /// Deliberate: it does not sort first.
    void destroy();

    /// True when the list is in construction order.
    bool isSorted() const { return sorted; }
    /// The registered fxOrderedGlobal pointers, in the present order.
    const fxVoidPtrArray& getGlobals() const { return globals; }

private:
    friend struct fxGlobalOrderLayout;  // tests/core/fxToolkit_test.cpp

    fxOrderedGlobal*& entry(unsigned int index);

    bool sorted;             // cleared by every add
    fxVoidPtrArray globals;  // fxOrderedGlobal*, in registration order until sorted
};

/// The library's own ordering; null until the first registration.
extern FX_EXPORT fxGlobalOrder* fx_toolkitGlobalOrder;
/// The host's ordering; null until the first registration.
extern FX_EXPORT fxGlobalOrder* fx_applicationGlobalOrder;

/// Constructs the toolkit's globals, then the application's. Call it once
/// before using the library; later calls, and calls made from within a
/// construct function, do nothing. A construct function may register further
/// globals: those of an ordering that is being constructed come behind, as
/// they were registered. One that throws leaves the call undone: the next one
/// calls every construct function again.
FX_EXPORT void fxInitializeToolkit();

/// The same operation under its other name; both share one "done" flag.
FX_EXPORT void fxInitGlobalOrderings();

/// Destroys the application's globals, then the toolkit's, each in reverse.
/// Later calls, and calls made from within a destroy function, do nothing. A
/// destroy function that throws leaves the call undone, as above.
/// Deliberate: calling it without fxInitializeToolkit runs the destroy
/// functions of globals that were never constructed.
FX_EXPORT void fxCleanupGlobalOrderings();
