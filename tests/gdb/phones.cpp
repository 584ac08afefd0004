#include <kelvofxds/kelvofxds.h>

class Bell : public fxObj {
public:
    Bell() { addInput("ring", fxDT_int, this, reinterpret_cast<void (*)()>(ring), 0); }
    static void ring(Bell* self, int times) { self->rung += times; }
    int rung = 0;
    fxStrArray visitors;
};

class Button : public fxObj {
public:
    Button() : pressed(addOutput("pressed", fxDT_int)) {}
    fxOutputChannel* pressed;
};

int main() {
    fxInitializeToolkit();
    fxStrStrDictionary phones;
    phones.add("Ada", "1815");
    phones.add("Bob", "1906");
    Bell bell;
    bell.visitors.append("Eve");
    Button button;
    button.connect("pressed", &bell, "ring");
    button.sendInt(button.pressed, 3, fxObj::fxSendQueued);
    fx_theEventHandler->distributeEvents();
}
