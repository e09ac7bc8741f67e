#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

// A small JSON reader for checking what qvx prints: enough for `qvx dump --json`.
namespace qvtest
{

class Json
{
public:
    enum Type
    {
        null,
        boolean,
        number,
        string,
        array,
        object,
    };

    // Throws std::runtime_error naming the offset of the first mistake.
    static Json Parse(const std::string& text);

    Type GetType() const { return m_type; }
    bool IsNull() const { return m_type == null; }
    bool Bool() const;
    double Number() const;
    long Int() const { return long(Number()); }
    const std::string& Str() const;
    size_t Size() const; // array elements or object members
    const Json& operator[](size_t i) const;
    const Json& operator[](const std::string& key) const;
    bool Has(const std::string& key) const;
    const std::vector<Json>& Items() const { return m_items; }

private:
    Type m_type = null;
    bool m_bool = false;
    double m_number = 0.0;
    std::string m_string;
    std::vector<Json> m_items;
    std::map<std::string, Json> m_members;

    friend class JsonParser;
};

} // namespace qvtest
