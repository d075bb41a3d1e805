/* Stands in for another OpenCV loaded into the host's process first: its
   allocator ends the process, so any call of the engine's that binds to it
   instead of the engine's own copy shows at once. */
#include <stdio.h>
#include <stdlib.h>

void* other_fast_malloc(unsigned long n) __asm__("_ZN2cv10fastMallocEm");
void other_fast_free(void* p) __asm__("_ZN2cv8fastFreeEPv");

void* other_fast_malloc(unsigned long n) {
    (void)n;
    fputs("another OpenCV's allocator was called\n", stderr);
    abort();
}

void other_fast_free(void* p) {
    (void)p;
    fputs("another OpenCV's allocator was called\n", stderr);
    abort();
}
