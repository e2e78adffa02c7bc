// Placeholder until the message writer stands: the number on stderr.
#include "frame/messages.h"

#include <cstdio>

uint32_t zvkWriteMsg(uint32_t number, uint32_t control, ...)
{
    fprintf(stderr, "ZVK%3.3u\n", number);
    return 0;
}
