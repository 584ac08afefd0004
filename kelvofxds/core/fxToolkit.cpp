#include "kelvofxds/core/fxToolkit.h"

#include <utility>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxDebug.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxOrderedGlobal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxSequencer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxDataInternal.h"
#include "kelvofxds/values/fxProperty.h"

// Constant-initialised: other files register before this file's initialisers
// would run.
fxGlobalOrder* fx_toolkitGlobalOrder = nullptr;
fxGlobalOrder* fx_applicationGlobalOrder = nullptr;

namespace {
const unsigned int initialEntries = 10;
}  // namespace

fxGlobalOrder::fxGlobalOrder() : sorted(false) { globals.setMaxLength(initialEntries); }

void fxGlobalOrder::createOrderings() {
    if (!fx_toolkitGlobalOrder)
        fx_toolkitGlobalOrder = fxNew<fxGlobalOrder>();
    if (!fx_applicationGlobalOrder)
        fx_applicationGlobalOrder = fxNew<fxGlobalOrder>();
}

int fxGlobalOrder::add(fxOrderedGlobal* global, int which) {
    createOrderings();
    fxGlobalOrder* order = which == 1 ? fx_toolkitGlobalOrder : fx_applicationGlobalOrder;
    return order->add(global);
}

int fxGlobalOrder::add(fxOrderedGlobal* global) {
    FX_CHECK_NOT_NULL("fxGlobalOrder", global);
    globals.append(&global);
    sorted = false;
    return static_cast<int>(globals.length()) - 1;
}

fxOrderedGlobal*& fxGlobalOrder::entry(unsigned int index) {
    return *static_cast<fxOrderedGlobal**>(globals.at(index));
}

void fxGlobalOrder::sort() {
    sorted = false;
    const unsigned int n = globals.length();
    for (unsigned int i = 0; i + 1 < n; ++i) {
        for (unsigned int j = i + 1; j < n; ++j) {
            if (entry(i)->dependsOn(*entry(j)))
                std::swap(entry(i), entry(j));
        }
    }
    sorted = true;
}

void fxGlobalOrder::create() {
    if (!sorted)
        sort();
    for (unsigned int i = 0; i < globals.length(); ++i) {
        if (entry(i)->cons)
            entry(i)->cons();
    }
}

void fxGlobalOrder::destroy() {
    for (unsigned int i = globals.length(); i-- > 0;) {
        if (entry(i)->dest)
            entry(i)->dest();
    }
}

// The start-up functions.

namespace {
bool firstInitialization = true;  // shared by the two names of the operation
bool firstCleanup = true;

// True while it lives. The host's functions may throw.
class Within {
public:
    explicit Within(bool& itsFlag) : flag(itsFlag) { flag = true; }
    Within(const Within&) = delete;
    Within& operator=(const Within&) = delete;
    ~Within() { flag = false; }

private:
    bool& flag;
};

bool initializing = false;  // a construct function called us again
bool cleaningUp = false;    // a destroy function did
}  // namespace

void fxInitGlobalOrderings() {
    if (!firstInitialization || initializing)
        return;
    FX_WHEN_CHECKED(fxMisuse::isInitializing());
    const Within within(initializing);
    fxGlobalOrder::createOrderings();
    fx_toolkitGlobalOrder->create();
    fx_applicationGlobalOrder->create();
    firstInitialization = false;
}

void fxInitializeToolkit() { fxInitGlobalOrderings(); }

void fxCleanupGlobalOrderings() {
    if (!firstCleanup || cleaningUp)
        return;
    const Within within(cleaningUp);
    fxGlobalOrder::createOrderings();
    fx_applicationGlobalOrder->destroy();
    fx_toolkitGlobalOrder->destroy();
    firstCleanup = false;
}

// The composition root: the records of the two classes everything rests on,
// and the toolkit's singletons in the order in which they depend on another.

fxTypeObj fxXDRObj_type("fxXDRObj", 1, fxXDRObj::newInstance, fxXDRObj::deleteInstance,
                        fxXDRObj::xdr);
fxTypeObj fxStr_type("fxStr", 1, fxStr::newInstance, fxStr::deleteInstance, fxStr::xdr);

namespace {
void drawDataTypes() {
    fx_nextDataType = fxNew<fxSequencer>();
    for (unsigned short* code : fxValueTypeCodes)
        *code = static_cast<unsigned short>((*fx_nextDataType)());
}

void drawEventTypes() {
    fx_nextEventType = fxNew<fxSequencer>();
    fxET_Unknown = (*fx_nextEventType)();
    fxET_MessageEvent = (*fx_nextEventType)();
}
}  // namespace

static void fxOG_Init_cons() {
    fxProperty::constructPropertyNames();
    if (!fx_nextDataType)
        drawDataTypes();
    fxConverter::createStandardConverters();
    if (!fx_theExecutive)
        fx_theExecutive = fxNew<fxExec>();
    if (!fx_theEventHandler)
        fx_theEventHandler = fxNew<fxEventHandler>();
    if (!fx_nextEventType)
        drawEventTypes();
    if (!fx_theDebugger)
        fx_theDebugger = fxNew<fxDebug>(static_cast<unsigned char>(1));
}

// The singletons live until the process exits.
static void fxOG_Init_dest() {}

fxOrderedGlobal fxOG_Init(fxOG_Init_cons, fxOG_Init_dest, nullptr, 1);
