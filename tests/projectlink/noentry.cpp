// A shared library that loads but exports no component entry point.
extern "C" int QvNotAComponent()
{
    return 42;
}
