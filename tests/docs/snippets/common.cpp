// Compiled for what comes with it: the headers that the bodies of main include.
int main() {}
