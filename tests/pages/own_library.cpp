#include <torv/torv.h>

#include <cstdlib>

int main() {
    setenv("TORV_LIBRARY_PATH", ".", 1);
    BLOCK
    return 0;
}
