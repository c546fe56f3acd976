/* An outside program: links the installed library and runs one transform. */
#include <kfpgen.h>
#include <stdio.h>
#include <string.h>

int main(void) {
    const LibVersion* v = kfpgenGetLibVersion();
    if (v == NULL || v->major != 6 || strncmp(v->name, "libkfpgeny8.so.6.1", 18) != 0) return 1;
    printf("%s %s\n", v->name, v->version);
    return 0;
}
