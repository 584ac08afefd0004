#include "kelvofxds/values/fxData.h"

#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFreeListInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/values/fxDataInternal.h"

// The codes. Constant-initialised with the numbers that start-up draws for
// them: objects of static initialisers ask for them before.
#define FX_CODE(number, code, Holder, Type, name, shown) unsigned short fxDT_##code = number;
FX_VALUE_TYPES(FX_CODE, FX_CODE, FX_CODE)
#undef FX_CODE

namespace {
#define FX_NUMBER(number, code, Holder, Type, name, shown) number,
constexpr unsigned short numbers[] = {FX_VALUE_TYPES(FX_NUMBER, FX_NUMBER, FX_NUMBER)};
#undef FX_NUMBER

constexpr bool numbersAscend() {
    unsigned int next = 0;
    for (const unsigned short number : numbers) {
        if (number != next++)
            return false;
    }
    return true;
}
static_assert(numbersAscend(), "start-up draws 0, 1, 2 and so on");

// Stores a copy of `value` at `out`.
template <class Value>
void store(const Value& value, void* out) {
    std::memcpy(out, &value, sizeof value);
}

void store(const fxStr& value, void* out) { *static_cast<fxStr*>(out) = value; }

void store(const fxStrArray& value, void* out) {
    auto* array = static_cast<fxStrArray*>(out);
    array->resize(0);
    array->append(static_cast<const fxArray&>(value));
}

// Ends a value that does not end itself.
template <class Value>
void end(const Value&) {}

void end(char* text) { std::free(text); }
}  // namespace

fxData::fxData(unsigned short typeCode) : count(0), type(typeCode) {}

fxData::~fxData() {
    FX_CHECK_THAT("fxData", fxMisuse::holdersOf(this) == 0,
                  "the holder is still held by %u of all properties and messages",
                  fxMisuse::holdersOf(this));
}

#ifdef KELVOFXDS_CHECKED
namespace {
// What stands in the place of a holder that has been deleted, until its memory is used again.
class DeletedData : public fxData {
public:
    DeletedData() : fxData(fxDT_void) {}
    ~DeletedData() override { refuse("~fxData"); }
    const char* dataName() const override { refuse("dataName"); }
    void deliverTo(void (*)(), void*) override { refuse("deliverTo"); }
    void getValue(unsigned short, void*) override { refuse("getValue"); }
    unsigned int getSize() override { refuse("getSize"); }

private:
    [[noreturn]] static void refuse(const char* operation) {
        fxMisuse::says(
            "fxData", operation,
            "the holder has been deleted already; what is sent belongs to its receivers");
    }
};
}  // namespace
#endif

// What the holders have in common: their memory and their name.
#define FX_HOLDER(Class, name)                                                    \
    namespace {                                                                   \
    fxFreeList<sizeof(Class)> free##Class;                                        \
    }                                                                             \
    void* Class::operator new(std::size_t size) {                                 \
        FX_CHECK_THREAD(#Class);                                                  \
        return free##Class.allocate(size);                                        \
    }                                                                             \
    void* Class::operator new(std::size_t size, const std::nothrow_t&) noexcept { \
        FX_CHECK_THREAD(#Class);                                                  \
        return free##Class.tryAllocate(size);                                     \
    }                                                                             \
    void Class::operator delete(void* holder, std::size_t size) {                 \
        FX_CHECK_THREAD(#Class);                                                  \
        FX_WHEN_CHECKED(new (holder) DeletedData);                                \
        free##Class.release(holder, size);                                        \
    }                                                                             \
    /* Its size is not known, but not below this. */                              \
    void Class::operator delete(void* holder, const std::nothrow_t&) noexcept {   \
        free##Class.release(holder, sizeof(Class));                               \
    }                                                                             \
    const char* Class::dataName() const { return name; }

#define FX_VALUE(number, code, Holder, Type, name, shown)                         \
    FX_HOLDER(fx##Holder##Data, name)                                             \
    fx##Holder##Data::fx##Holder##Data(Type v) : fxData(fxDT_##code), value(v) {} \
    fx##Holder##Data::~fx##Holder##Data() { end(value); }                         \
    void fx##Holder##Data::deliverTo(void (*function)(), void* target) {          \
        fxReceive<Type>(function, target, value);                                 \
    }                                                                             \
    void fx##Holder##Data::getValue(unsigned short, void* out) {                  \
        FX_CHECK_NOT_NULL("fx" #Holder "Data", out);                              \
        store(value, out);                                                        \
    }                                                                             \
    unsigned int fx##Holder##Data::getSize() { return sizeof(Type); }

#define FX_NOTHING(number, code, Holder, Type, name, shown)              \
    FX_HOLDER(fx##Holder##Data, name)                                    \
    fx##Holder##Data::fx##Holder##Data() : fxData(fxDT_##code) {}        \
    fx##Holder##Data::~fx##Holder##Data() {}                             \
    void fx##Holder##Data::deliverTo(void (*function)(), void* target) { \
        fxReceive<>(function, target);                                   \
    }                                                                    \
    void fx##Holder##Data::getValue(unsigned short, void*) {}            \
    unsigned int fx##Holder##Data::getSize() { return 0; }

#define FX_POINTER(number, code, Holder, Type, name, shown)

// Strings have no cheaper way in than by copy.
// NOLINTBEGIN(performance-unnecessary-value-param)
FX_VALUE_TYPES(FX_NOTHING, FX_VALUE, FX_POINTER)
// NOLINTEND(performance-unnecessary-value-param)
