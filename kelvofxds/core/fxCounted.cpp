#include "kelvofxds/core/fxCounted.h"

Counted::~Counted() {}

RPtr_base::~RPtr_base() {
    if (ptr && --ptr->count <= 0)
        delete ptr;
}
