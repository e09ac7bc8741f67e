#pragma once

#include "model/datetime.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class CArchive;

// Base of every record written to a .qvx stream as an object.
class CObject
{
public:
    virtual ~CObject() = default;
    // The class name written into the stream ("CTask", "CDay", ...).
    virtual const char* GetClassName() const = 0;
    // One operation with a storing and a loading branch (CArchive::IsStoring).
    virtual void Serialize(CArchive& ar) = 0;
};

// What went wrong while reading a stream, and where.
class ArchiveError : public std::runtime_error
{
public:
    enum Kind
    {
        endOfFile,    // the stream ended early
        badSchema,    // a record version outside its accepted range
        badClass,     // unknown class name, unregistered index, or wrong class at a position
        badFormat,    // any other malformed value
    };

    ArchiveError(Kind kind, std::string record, uint64_t offset, std::string detail);

    Kind GetKind() const { return m_kind; }
    const std::string& GetRecord() const { return m_record; }
    uint64_t GetOffset() const { return m_offset; }
    const std::string& GetDetail() const { return m_detail; }

private:
    Kind m_kind;
    std::string m_record;
    uint64_t m_offset;
    std::string m_detail;
};

// Creates an empty record for a class name read from the stream, or nullptr when unknown.
using ObjectFactory = std::function<std::unique_ptr<CObject>(std::string_view className)>;

// Reader and writer of the object-archive byte stream. Texts are UTF-8 in memory
// and Windows-1252 in the stream.
class CArchive
{
public:
    // A storing archive appending to `out`.
    explicit CArchive(std::vector<uint8_t>& out);
    // A loading archive over `size` bytes at `data` (not copied; must outlive the archive).
    CArchive(const uint8_t* data, size_t size, ObjectFactory factory);

    bool IsStoring() const { return m_out != nullptr; }
    bool IsLoading() const { return m_out == nullptr; }

    void WriteU8(uint8_t v);
    void WriteU16(uint16_t v);
    void WriteU32(uint32_t v);
    void WriteF32(float v);
    void WriteF64(double v);
    void WriteString(std::string_view utf8);
    void WriteDate(const CDateTime& d);
    void WriteCount(uint32_t count);
    void WriteIdArray(const std::vector<uint32_t>& ids);
    // Emits the class tag (described on first use, then by index) and the body.
    void WriteObject(CObject& obj);

    uint8_t ReadU8();
    uint16_t ReadU16();
    uint32_t ReadU32();
    float ReadF32();
    double ReadF64();
    std::string ReadString();
    CDateTime ReadDate();
    // 32-bit seconds since 1970 UTC, as local time; 0 reads as a null date when `zeroIsNull`.
    CDateTime ReadOldDate(bool zeroIsNull = false);
    uint32_t ReadCount();
    std::vector<uint32_t> ReadIdArray();

    // Reads an object tag and, for a new object, its body. Returns the new record,
    // or nullptr for a null reference or a reference to an object read before
    // (this system writes each record once; such references are accepted and skipped).
    // A record of another class than `expected` (or of any of `alternatives`) is a format error.
    std::unique_ptr<CObject> ReadObject(std::string_view expected);
    std::unique_ptr<CObject> ReadObject(const std::vector<std::string_view>& accepted);
    template <class T> std::unique_ptr<T> ReadObjectOf(std::string_view expected)
    {
        std::unique_ptr<CObject> obj = ReadObject(expected);
        return std::unique_ptr<T>(static_cast<T*>(obj.release()));
    }

    // A record's version check: throws badSchema naming the record when out of range.
    uint32_t ReadVersion(const char* record, uint32_t lowest, uint32_t highest);

    uint64_t GetOffset() const { return m_pos; }
    size_t GetSize() const { return m_size; }
    bool AtEnd() const { return m_pos >= m_size; }
    // Name of the record whose body is being read, for error messages.
    const std::string& CurrentRecord() const { return m_currentRecord; }

    [[noreturn]] void Fail(ArchiveError::Kind kind, const std::string& detail) const;

private:
    void Need(size_t n) const;
    void WriteBytes(const void* p, size_t n);
    uint32_t ReadLengthPrefix(bool& unicode);

    std::vector<uint8_t>* m_out = nullptr;
    const uint8_t* m_data = nullptr;
    size_t m_size = 0;
    size_t m_pos = 0;
    ObjectFactory m_factory;

    // Index 0 stands for no object; classes and objects share one running index.
    uint32_t m_mapCount = 1;
    std::unordered_map<std::string, uint32_t> m_storedClasses;
    // Loading: the class name of every registered index (objects carry their class's name).
    std::vector<std::string> m_loadedIndex;
    std::vector<bool> m_indexIsClass;
    std::string m_currentRecord;
};

// Windows-1252 <-> UTF-8. Characters without a Windows-1252 form become "?".
std::string Utf8ToCp1252(std::string_view utf8);
std::string Cp1252ToUtf8(std::string_view bytes);
std::string Utf16LeToUtf8(const uint8_t* data, size_t units);
