#pragma once

#include "model/datetime.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
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
// and Windows-1252 in the stream, or UTF-16LE behind the 16-bit marker (0xFF, then
// the u16 0xFFFE) when they hold a character that Windows-1252 lacks. The fixed-size
// readers and writers are inline: a large document runs them tens of millions of times.
class CArchive
{
public:
    // A storing archive appending to `out`. The bytes reach `out` in blocks: all of
    // them once Flush() is called or the archive is destroyed.
    explicit CArchive(std::vector<uint8_t>& out);
    ~CArchive();
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;
    CArchive(CArchive&& other) noexcept;

    // Storing: appends what is buffered to the output.
    void Flush();
    // A loading archive over `size` bytes at `data` (not copied; must outlive the archive).
    CArchive(const uint8_t* data, size_t size, ObjectFactory factory);

    bool IsStoring() const { return m_out != nullptr; }
    bool IsLoading() const { return m_out == nullptr; }

    void WriteU8(uint8_t v) { WriteLittle(v); }
    void WriteU16(uint16_t v) { WriteLittle(v); }
    void WriteU32(uint32_t v) { WriteLittle(v); }
    void WriteF32(float v) { WriteLittle(std::bit_cast<uint32_t>(v)); }
    void WriteF64(double v) { WriteLittle(std::bit_cast<uint64_t>(v)); }
    void WriteString(std::string_view utf8);
    void WriteDate(const CDateTime& d);
    void WriteCount(uint32_t count);
    void WriteIdArray(const std::vector<uint32_t>& ids);
    // Emits the class tag (described on first use, then by index) and the body.
    void WriteObject(CObject& obj);

    uint8_t ReadU8()
    {
        Need(1);
        return m_data[m_pos++];
    }
    uint16_t ReadU16() { return ReadLittle<uint16_t>(); }
    uint32_t ReadU32() { return ReadLittle<uint32_t>(); }
    float ReadF32() { return std::bit_cast<float>(ReadLittle<uint32_t>()); }
    double ReadF64() { return std::bit_cast<double>(ReadLittle<uint64_t>()); }
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
    // Loading: goes back to an offset read before, to try another form of a record.
    void Rewind(uint64_t offset) { m_pos = offset <= m_size ? size_t(offset) : m_size; }
    size_t GetSize() const { return m_size; }
    bool AtEnd() const { return m_pos >= m_size; }
    // Bytes not read yet.
    size_t Remaining() const { return m_size - m_pos; }
    // Name of the record whose body is being read, for error messages.
    const std::string& CurrentRecord() const { return m_currentRecord ? *m_currentRecord : m_noRecord; }

    [[noreturn]] void Fail(ArchiveError::Kind kind, const std::string& detail) const;

private:
    void Need(size_t n) const
    {
        if (n > m_size - m_pos) [[unlikely]]
            FailEndOfFile();
    }
    [[noreturn]] void FailEndOfFile() const;
    void WriteBytes(const void* p, size_t n);
    template <class T> void WriteLittle(T v)
    {
        if constexpr (std::endian::native != std::endian::little)
            v = ByteSwap(v);
        if (size_t(m_bufferEnd - m_cursor) < sizeof v) [[unlikely]]
            Flush();
        std::memcpy(m_cursor, &v, sizeof v);
        m_cursor += sizeof v;
    }
    template <class T> T ReadLittle()
    {
        Need(sizeof(T));
        T v;
        std::memcpy(&v, m_data + m_pos, sizeof v);
        m_pos += sizeof v;
        if constexpr (std::endian::native != std::endian::little)
            v = ByteSwap(v);
        return v;
    }
    template <class T> static T ByteSwap(T v)
    {
        T r = 0;
        for (size_t i = 0; i < sizeof v; ++i)
            r = T((r << 8) | ((v >> (8 * i)) & 0xFF));
        return r;
    }
    void WriteLengthPrefix(size_t len);
    uint32_t ReadLengthPrefix(bool& unicode);
    std::unique_ptr<CObject> ReadObject(const std::string_view* accepted, size_t count);
    uint32_t StoredClassIndex(const char* name) const;

    std::vector<uint8_t>* m_out = nullptr;
    // Storing: values are gathered here and appended to *m_out a block at a time.
    std::unique_ptr<uint8_t[]> m_buffer;
    uint8_t* m_cursor = nullptr;
    uint8_t* m_bufferEnd = nullptr;
    const uint8_t* m_data = nullptr;
    size_t m_size = 0;
    size_t m_pos = 0;
    ObjectFactory m_factory;

    // Index 0 stands for no object; classes and objects share one running index.
    uint32_t m_mapCount = 1;
    // Storing: classes already described, found by the address of their name first.
    struct StoredClass
    {
        const char* address;
        std::string name;
        uint32_t index;
    };
    std::vector<StoredClass> m_storedClasses;
    // Loading: the classes met so far (stable addresses), and for every registered
    // index the slot of its class in that list, with kIsClassBit set for a class index.
    std::deque<std::string> m_loadedClasses;
    std::vector<uint8_t> m_loadedIndex;
    const std::string* m_currentRecord = nullptr;
    std::string m_noRecord;
};

// Windows-1252 <-> UTF-8. Characters without a Windows-1252 form become "?".
std::string Utf8ToCp1252(std::string_view utf8);
std::string Cp1252ToUtf8(std::string_view bytes);
std::string Utf16LeToUtf8(const uint8_t* data, size_t units);
