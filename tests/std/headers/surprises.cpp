// Operations that surprise, each in a line of its own that ends in the text of its mark, and what
// is to be written instead, without one.
#define KELVOFXDS_WARN_SURPRISES
#include <kelvofxds/kelvofxds.h>
#include <kelvofxds/std.h>

void surprising(fxIntArray& numbers, fxArray& any, fxVoidPtrArray& pointers, fxDictionary& mere,
                fxStrStrDictionary& d, fxVoidPtrDict& p, fxStrSet& set, fxSet& base) {
    int object = 0;
    numbers.qsort();                  // warns: fxSort(array)
    numbers.qsort(0, 1);              // warns: fxSort(array)
    any.qsort();                      // warns: fxSort(array)
    numbers.append(0);                // warns: non-null
    numbers.append(nullptr);          // warns: non-null
    numbers.insert(0, 0);             // warns: non-null
    numbers.find(0);                  // warns: non-null
    numbers.find(nullptr, 0);         // warns: non-null
    pointers.append(0);               // warns: non-null
    pointers.append(&object);         // warns: fxAppend(array, pointer)
    pointers.append(&numbers);        // warns: fxAppend(array, pointer)
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
    pointers.append(pointers.at(0));
    pointers.append(static_cast<const fxArray&>(pointers).at(0));
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
