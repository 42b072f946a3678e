#include <torv/torv.h>

#include <cstdio>

int main() {
    BLOCK
    return 0;
}
