// A library of the dispatcher's name that isn't one.

extern "C" __attribute__((visibility("default"))) int logging_dispatcher_nothing();

int logging_dispatcher_nothing()
{
    return 0;
}
