#include "database/dbconnection.h"

#include "database/pgconnection.h"
#include "database/sqliteconnection.h"

#include <cctype>

namespace database
{

bool IsPostgresTarget(std::string_view target)
{
    if (target.rfind("postgresql:", 0) == 0 || target.rfind("postgres:", 0) == 0)
        return true;
    // A keyword/value string starts with a keyword and "=": "host=db dbname=team".
    size_t i = target.find_first_not_of(" \t");
    if (i == std::string_view::npos)
        return false;
    const size_t start = i;
    while (i < target.size() && (std::isalpha(static_cast<unsigned char>(target[i])) || target[i] == '_'))
        ++i;
    if (i == start)
        return false;
    i = target.find_first_not_of(" \t", i);
    return i != std::string_view::npos && target[i] == '=';
}

std::unique_ptr<CDbConnection> OpenDatabase(const std::string& target, OpenMode mode)
{
    if (target.empty())
        throw CDatabaseError(CDatabaseError::connect, "the database TARGET is empty");
    if (IsPostgresTarget(target))
        return CPgConnection::Open(target);
    return CSqliteConnection::Open(target, mode == OpenMode::create);
}

} // namespace database
