// Imports a CSV file from arbitrary bytes: it reads or fails with a message that says
// where; what reads is planned and applied (see importcheck.h). The first byte picks the
// options; a first line "#map ..." is taken for --map and "#date ..." for --date-format.

#include "importcheck.h"
#include "interchange/csvreader.h"

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
    const uint8_t flags = data[0];
    std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    interchange::CsvOptions options;
    options.localeDatePicture = (flags & 1) ? "%d.%m.%Y" : "%m/%d/%Y";
    options.encoding = (flags & 2) ? interchange::TextEncoding::windows1252 : interchange::TextEncoding::utf8;
    for (const char* prefix : {"#map ", "#date "})
        if (bytes.substr(0, std::string_view(prefix).size()) == prefix)
        {
            const size_t end = bytes.find('\n');
            const std::string value(bytes.substr(std::string_view(prefix).size(),
                                                 end == std::string_view::npos ? std::string_view::npos
                                                                               : end - std::string_view(prefix).size()));
            (prefix[1] == 'm' ? options.map : options.datePicture) = value;
            bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
        }
    interchange::ImportSource source;
    try
    {
        source = interchange::ReadCsv(bytes, options);
    }
    catch (const interchange::CImportError& e)
    {
        fuzzcheck::Check(*e.what() != '\0', "an error without a message");
        return 0;
    }
    fuzzcheck::PlanAndApply(source, false, (flags & 4) != 0);
    return 0;
}
