// Imports an iCalendar file from arbitrary bytes: it reads or fails with a message that
// says where; what reads is planned and applied (see importcheck.h). The first byte picks
// the options.

#include "importcheck.h"
#include "interchange/icalreader.h"

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    setenv("TZ", "Europe/Berlin", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const uint8_t options = data[0];
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    interchange::ICalOptions read;
    read.taskFromCategories = (options & 1) != 0;
    read.now = CDateTime::FromDate(2024, 6, 12, 15, 0);
    interchange::ImportSource source;
    try
    {
        source = interchange::ReadICalendar(bytes, read);
    }
    catch (const interchange::CImportError& e)
    {
        fuzzcheck::Check(*e.what() != '\0', "an error without a message");
        return 0;
    }
    fuzzcheck::PlanAndApply(source, (options & 2) != 0, (options & 4) != 0);
    return 0;
}
