#pragma once

#include "model/datetime.h"

#include <cstdint>
#include <string>

class CTimeKeeperDoc;

namespace cli
{

// A small, realistic document for trying the program out: three clients with their
// projects and tasks, activities, payment methods, a contact, four weeks of time and
// expense entries ending the day before `today`, outstanding and completed to-dos and
// a few report definitions. `doc` is emptied first.
void MakeDemoDocument(CTimeKeeperDoc& doc, const CDateTime& today,
                      const std::string& employee = "Robin Calder");

struct SyntheticOptions
{
    int years = 1;
    uint32_t seed = 1;
    int firstYear = 2000;
    int timeEntriesPerDay = 15;
    int expensesPerDay = 2;
};

// Years of heavy use at scale, for benchmarks and load tests: about four hundred
// tasks four levels deep, `timeEntriesPerDay` time entries and about
// `expensesPerDay` expense entries per working day from 1 January of `firstYear`,
// notes, completed and outstanding to-dos. The same options give the same document.
void MakeSyntheticDocument(CTimeKeeperDoc& doc, const SyntheticOptions& options);
inline void MakeSyntheticDocument(CTimeKeeperDoc& doc, int years, uint32_t seed)
{
    SyntheticOptions options;
    options.years = years;
    options.seed = seed;
    MakeSyntheticDocument(doc, options);
}

} // namespace cli
