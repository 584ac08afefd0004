#include "kelvofxds/objects/fxExec.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxSelectHandler.h"

fxExec* fx_theExecutive = nullptr;

fxExec::fxExec()
    : lowest(noHandlers),
      nfds(0),
      dirty(0),
      wantRead(0),
      wantWrite(0),
      wantException(0),
      handlers(),
      unused(0) {
    FD_ZERO(&readSet);
    FD_ZERO(&writeSet);
    FD_ZERO(&exceptionSet);
}

fxExec::~fxExec() {}

// Select handlers.

void fxExec::addSelectHandler(fxSelectHandler* h) {
    FX_CHECK_THREAD("fxExec");
    FX_CHECK_NOT_NULL("fxExec", h);
    if (h->fd < 0 || h->fd >= static_cast<int>(maxHandlers))
        return;
    handlers[h->fd] = h;
    dirty = 1;
}

void fxExec::removeSelectHandler(fxSelectHandler* h) {
    FX_CHECK_THREAD("fxExec");
    FX_CHECK_NOT_NULL("fxExec", h);
    if (h->fd < 0 || h->fd >= static_cast<int>(maxHandlers))
        return;
    handlers[h->fd] = nullptr;
    dirty = 1;
}

void fxExec::updateSelectState() {
    FX_CHECK_THREAD("fxExec");
    wantRead = wantWrite = wantException = 0;
    FD_ZERO(&readSet);
    FD_ZERO(&writeSet);
    FD_ZERO(&exceptionSet);
    lowest = noHandlers;
    nfds = 0;
    for (unsigned short d = 0; d < maxHandlers; ++d) {
        const fxSelectHandler* h = handlers[d];
        if (!h)
            continue;
        if (h->readInterest) {
            FD_SET(d, &readSet);
            wantRead = 1;
        }
        if (h->writeInterest) {
            FD_SET(d, &writeSet);
            wantWrite = 1;
        }
        if (h->exceptionInterest) {
            FD_SET(d, &exceptionSet);
            wantException = 1;
        }
        if (lowest == noHandlers)
            lowest = d;
        nfds = static_cast<unsigned short>(d + 1);
    }
    dirty = 0;
}

fd_set fxExec::getReadSet() {
    if (dirty)
        updateSelectState();
    return readSet;
}

fd_set fxExec::getWriteSet() {
    if (dirty)
        updateSelectState();
    return writeSet;
}

fd_set fxExec::getExceptionSet() {
    if (dirty)
        updateSelectState();
    return exceptionSet;
}

// Functions around the wait.

namespace {
void removeFirst(fxArray& array, const void* elem) {
    const unsigned int i = array.find(elem);
    if (i < array.length())
        array.remove(i, 1);
}
}  // namespace

void fxExec::addPreSelectFunc(void (*function)()) {
    FX_CHECK_THREAD("fxExec");
    FX_CHECK_NOT_NULL("fxExec", function);
    preSelectFuncs.append(&function);
}

void fxExec::removePreSelectFunc(void (*function)()) {
    FX_CHECK_THREAD("fxExec");
    removeFirst(preSelectFuncs, &function);
}

void fxExec::addPostSelectFunc(void (*function)()) {
    FX_CHECK_THREAD("fxExec");
    FX_CHECK_NOT_NULL("fxExec", function);
    postSelectFuncs.append(&function);
}

void fxExec::removePostSelectFunc(void (*function)()) {
    FX_CHECK_THREAD("fxExec");
    removeFirst(postSelectFuncs, &function);
}

// Applications. They may come and go while they are called.

void fxExec::add(fxApplication* application) {
    FX_CHECK_THREAD("fxExec");
    FX_CHECK_NOT_NULL("fxExec", application);
    applications.append(&application);
}

void fxExec::remove(fxApplication* application) {
    FX_CHECK_THREAD("fxExec");
    removeFirst(applications, &application);
}

bool fxExec::contains(fxApplication* application) {
    return applications.find(&application) < applications.length();
}

namespace {
template <class Call>
void forEachApplication(const fxVoidPtrArray& applications, Call call) {
    const unsigned int n = applications.length();
    for (unsigned int i = 0; i < n && i < applications.length(); ++i)
        call(static_cast<fxApplication*>(applications[i]));
}
}  // namespace

void fxExec::initialize(int argc, char** argv) {
    FX_CHECK_THREAD("fxExec");
    forEachApplication(applications, [&](fxApplication* a) { a->initialize(argc, argv); });
}

void fxExec::open() {
    FX_CHECK_THREAD("fxExec");
    forEachApplication(applications, [](fxApplication* a) { a->open(); });
}

void fxExec::close() {
    FX_CHECK_THREAD("fxExec");
    forEachApplication(applications, [](fxApplication* a) {
        if (a->isOpen())
            a->close();
    });
}

void fxExec::loop() {
    FX_CHECK_THREAD("fxExec");
    const float longestWait = 1000.0F;  // seconds
    do
        poll(longestWait);
    while (applications.length() != 0);
}
