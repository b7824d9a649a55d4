// The least that starting a C++ program costs.
int main() {
}
