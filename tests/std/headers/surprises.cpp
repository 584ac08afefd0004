// Operations that surprise, each in a line of its own that ends in the text of its mark, and what
// is to be written instead, without one.
#define KELVOFXDS_WARN_SURPRISES
#include <kelvofxds/kelvofxds.h>
#include <kelvofxds/std.h>

void surprising(fxIntArray& numbers, fxArray& any, fxVoidPtrArray& pointers, fxDictionary& mere,
                fxStrStrDictionary& d, fxVoidPtrDict& p, fxStrSet& set, fxSet& base) {
    int object = 0;
    void* pointer = &object;
    numbers.qsort();                  // warns: fxSort(array)
    numbers.qsort(0, 1);              // warns: fxSort(array)
    any.qsort();                      // warns: fxSort(array)
    numbers.append(0);                // warns: fxAppend(array, 0)
    numbers.insert(0, 0);             // warns: the address of a variable
    numbers.find(0);                  // warns: contains(array, 0)
    pointers.append(&object);         // warns: fxAppend(array, pointer)
    pointers.append(pointer);         // warns: fxAppend(array, pointer)
    const fxStrStrDictionary one(d);  // warns: fxCopyInto(from, to)
    const fxVoidPtrDict two(p);       // warns: fxCopyInto(from, to)
    const fxStrSet three(set);        // warns: fxCopyInto(from, to)
    d = one;                          // warns: fxCopyInto(from, to)
    p = two;                          // warns: fxCopyInto(from, to)
    set = three;                      // warns: fxCopyInto(from, to)
    base = set;                       // warns: fxCopyInto(from, to)
    mere = d;                         // warns: fxCopyInto(from, to)
    base | set;                       // warns: use operator|=
    base& set;                        // warns: use operator&=
    base - set;                       // warns: use operator-=
}

void safe(fxIntArray& numbers, fxVoidPtrArray& pointers, fxStrArray& texts, fxArrayOf<int>& values,
          fxStrStrDictionary& d, fxStrSet& set, fxSet& base) {
    int object = 0;
    void* pointer = &object;
    fxSort(numbers);
    texts.qsort();
    texts.qsort(0, 1);
    values.qsort();
    fxAppend(numbers, 0);
    numbers.append(&object);
    numbers.insert(&object, 0);
    numbers.append(numbers);
    contains(numbers, 0);
    values.append(0);
    fxAppend(pointers, pointer);
    fxAppend(pointers, &object);
    pointers.append(&pointer);
    pointers.append(pointers);
    texts.append("text");
    fxStrStrDictionary copy;
    fxStrSet same;
    fxCopyInto(d, copy);
    fxCopyInto(set, same);
    base |= set;
    base &= set;
    base -= set;
    fxIntArray other(numbers);
}
