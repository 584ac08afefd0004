// Classes of a host that are not complete where its own functions of these names are called.
#include <kelvofxds/std.h>

#include <iostream>

struct Known;
std::ostream& operator<<(std::ostream& out, const Known& known);
bool contains(const Known& known, int part);
int value_or(const Known& known, int key, int fallback);
const int* begin(const Known& known);
const int* end(const Known& known);
void fxAppend(Known& known, int part);
template <class T>
struct Box;
bool contains(const Box<int>& box, int part);
void show(Known& known);
bool show(const Box<int>& box);

void show(Known& known) {
    fxAppend(known, 1);
    std::cout << known << &known << contains(known, 1) << value_or(known, 1, 2) << *begin(known)
              << *end(known);
}
bool show(const Box<int>& box) { return contains(box, 1); }

namespace app {
class Other;
std::ostream& operator<<(std::ostream& out, const Other& other);
void show(const Other& other);
class Later;
void show(const Later* later, int n);
}  // namespace app
void app::show(const Other& other) { std::cout << other << "x" << &other << std::endl; }
void app::show(const Later* later, int n) { std::cout << later << n; }

// What is complete later on is what it is.
class app::Later : public fxIntArray {};
void show(const app::Later& later);
void show(const app::Later& later) { std::cout << later << contains(later, 1); }
