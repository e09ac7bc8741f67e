#include "views/catalogorder.h"

#include <algorithm>

void SortByName(NamedIds& records)
{
    std::sort(records.begin(), records.end(), [](const auto& a, const auto& b) {
        if (const int c = QString::compare(a.second, b.second, Qt::CaseInsensitive))
            return c < 0;
        if (const int c = QString::compare(a.second, b.second, Qt::CaseSensitive))
            return c < 0;
        return a.first < b.first;
    });
}
