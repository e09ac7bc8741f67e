#pragma once

#include <QString>

#include <cstdint>
#include <utility>
#include <vector>

// Catalog records (activities, expense types, payment methods, contacts) as every list
// and drop-down shows them: (id, name) in name order.
using NamedIds = std::vector<std::pair<uint32_t, QString>>;

// By name without regard to case; names that differ only in case, then ids, keep one order.
void SortByName(NamedIds& records);

// The records of a document's catalog map (id -> owning pointer) in name order.
template <class Map>
NamedIds ByName(const Map& records)
{
    NamedIds named;
    for (const auto& [id, record] : records)
    {
        if constexpr (requires { record->GetDisplayName(); })
            named.emplace_back(id, QString::fromStdString(record->GetDisplayName()));
        else
            named.emplace_back(id, QString::fromStdString(record->m_name));
    }
    SortByName(named);
    return named;
}
