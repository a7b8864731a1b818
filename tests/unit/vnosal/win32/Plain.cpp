// A program that does nothing, for being signed.
int main() { return 0; }
