#include "model/archive.h"

#include <cstring>

namespace
{
constexpr uint16_t kNullTag = 0;
constexpr uint16_t kNewClassTag = 0xFFFF;
constexpr uint16_t kClassTag = 0x8000;
constexpr uint32_t kBigClassTag = 0x80000000;
constexpr uint16_t kBigObjectTag = 0x7FFF;
// Indexes past this are refused: no real document holds that many records, and
// the table would otherwise grow without bound on a hostile stream.
constexpr uint32_t kMaxMapCount = 0x3FFFFFFF;
// Loading index table: the class slot of each index, this bit marking a class index.
// One byte per index keeps the table small for millions of objects; a stream can only
// name the few classes a document accepts.
constexpr uint8_t kIsClassBit = 0x80;
constexpr uint8_t kNoClass = 0x7F;

// Windows-1252 bytes 0x80 to 0x9F; the five undefined ones keep their C1 code point.
const char32_t kCp1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

void AppendUtf8(std::string& out, char32_t cp)
{
    if (cp < 0x80)
        out += static_cast<char>(cp);
    else if (cp < 0x800)
    {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
    else if (cp < 0x10000)
    {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

char ToCp1252(char32_t cp)
{
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF))
        return static_cast<char>(cp);
    for (int i = 0; i < 32; ++i)
        if (kCp1252High[i] == cp)
            return static_cast<char>(0x80 + i);
    return '?';
}
} // namespace

std::string Cp1252ToUtf8(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size());
    for (unsigned char c : bytes)
    {
        if (c < 0x80)
            out += static_cast<char>(c);
        else if (c < 0xA0)
            AppendUtf8(out, kCp1252High[c - 0x80]);
        else
            AppendUtf8(out, c);
    }
    return out;
}

namespace
{
// The code point of the UTF-8 sequence at `i` (advanced past it), or `kBadSequence`
// for a byte that does not start a well-formed sequence (then `i` moves by one byte).
constexpr char32_t kBadSequence = 0xFFFFFFFF;
char32_t NextCodePoint(std::string_view utf8, size_t& i)
{
    const unsigned char c = static_cast<unsigned char>(utf8[i]);
    if (c < 0x80)
    {
        ++i;
        return c;
    }
    int extra = 0;
    char32_t cp = 0;
    if ((c & 0xE0) == 0xC0)
    {
        extra = 1;
        cp = c & 0x1F;
    }
    else if ((c & 0xF0) == 0xE0)
    {
        extra = 2;
        cp = c & 0x0F;
    }
    else if ((c & 0xF8) == 0xF0)
    {
        extra = 3;
        cp = c & 0x07;
    }
    else
    {
        ++i;
        return kBadSequence;
    }
    for (int k = 1; k <= extra; ++k)
    {
        if (i + k >= utf8.size() || (static_cast<unsigned char>(utf8[i + k]) & 0xC0) != 0x80)
        {
            ++i;
            return kBadSequence;
        }
        cp = (cp << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
    }
    i += size_t(extra) + 1;
    return cp;
}

// Windows-1252 bytes for `utf8` when every character has one (a malformed byte becomes
// "?", as it always has); false at the first character the code page cannot hold.
bool Utf8ToCp1252Exactly(std::string_view utf8, std::string& out)
{
    out.clear();
    out.reserve(utf8.size());
    size_t i = 0;
    while (i < utf8.size())
    {
        const char32_t cp = NextCodePoint(utf8, i);
        if (cp == kBadSequence)
        {
            out += '?';
            continue;
        }
        const char c = ToCp1252(cp);
        if (c == '?' && cp != U'?')
            return false;
        out += c;
    }
    return true;
}

// UTF-16LE code units of `utf8`; what is not a character (a malformed byte, a surrogate
// code point, a value past U+10FFFF) becomes U+FFFD.
std::vector<uint8_t> Utf8ToUtf16Le(std::string_view utf8)
{
    std::vector<uint8_t> out;
    out.reserve(utf8.size() * 2);
    const auto unit = [&out](char32_t u)
    {
        out.push_back(uint8_t(u & 0xFF));
        out.push_back(uint8_t(u >> 8));
    };
    size_t i = 0;
    while (i < utf8.size())
    {
        char32_t cp = NextCodePoint(utf8, i);
        if (cp == kBadSequence || (cp >= 0xD800 && cp <= 0xDFFF) || cp > 0x10FFFF)
            cp = 0xFFFD;
        if (cp < 0x10000)
            unit(cp);
        else
        {
            cp -= 0x10000;
            unit(0xD800 + (cp >> 10));
            unit(0xDC00 + (cp & 0x3FF));
        }
    }
    return out;
}
} // namespace

std::string Utf8ToCp1252(std::string_view utf8)
{
    std::string out;
    out.reserve(utf8.size());
    size_t i = 0;
    while (i < utf8.size())
    {
        const char32_t cp = NextCodePoint(utf8, i);
        out += cp == kBadSequence ? '?' : ToCp1252(cp);
    }
    return out;
}

std::string Utf16LeToUtf8(const uint8_t* data, size_t units)
{
    std::string out;
    for (size_t i = 0; i < units; ++i)
    {
        char32_t u = data[2 * i] | (data[2 * i + 1] << 8);
        if (u >= 0xD800 && u <= 0xDBFF && i + 1 < units)
        {
            const char32_t lo = data[2 * i + 2] | (data[2 * i + 3] << 8);
            if (lo >= 0xDC00 && lo <= 0xDFFF)
            {
                u = 0x10000 + ((u - 0xD800) << 10) + (lo - 0xDC00);
                ++i;
            }
            else
                u = 0xFFFD;
        }
        else if (u >= 0xD800 && u <= 0xDFFF)
            u = 0xFFFD;
        AppendUtf8(out, u);
    }
    return out;
}

ArchiveError::ArchiveError(Kind kind, std::string record, uint64_t offset, std::string detail)
    : std::runtime_error(detail), m_kind(kind), m_record(std::move(record)), m_offset(offset),
      m_detail(std::move(detail))
{
}

namespace
{
constexpr size_t kWriteBlock = 64 * 1024;
}

CArchive::CArchive(std::vector<uint8_t>& out)
    : m_out(&out), m_buffer(new uint8_t[kWriteBlock]), m_cursor(m_buffer.get()),
      m_bufferEnd(m_buffer.get() + kWriteBlock)
{
}

CArchive::~CArchive()
{
    if (m_out)
        Flush();
}

CArchive::CArchive(CArchive&& other) noexcept
    : m_out(other.m_out), m_buffer(std::move(other.m_buffer)), m_cursor(other.m_cursor),
      m_bufferEnd(other.m_bufferEnd), m_data(other.m_data), m_size(other.m_size),
      m_pos(other.m_pos), m_factory(std::move(other.m_factory)), m_mapCount(other.m_mapCount),
      m_storedClasses(std::move(other.m_storedClasses)),
      m_loadedClasses(std::move(other.m_loadedClasses)),
      m_loadedIndex(std::move(other.m_loadedIndex)), m_currentRecord(other.m_currentRecord)
{
    other.m_out = nullptr;
}

void CArchive::Flush()
{
    if (!m_out || !m_buffer)
        return;
    m_out->insert(m_out->end(), m_buffer.get(), m_cursor);
    m_cursor = m_buffer.get();
}

void CArchive::WriteBytes(const void* p, size_t n)
{
    const uint8_t* b = static_cast<const uint8_t*>(p);
    if (n > size_t(m_bufferEnd - m_cursor))
    {
        Flush();
        if (n > kWriteBlock)
        {
            m_out->insert(m_out->end(), b, b + n);
            return;
        }
    }
    std::memcpy(m_cursor, b, n);
    m_cursor += n;
}

CArchive::CArchive(const uint8_t* data, size_t size, ObjectFactory factory)
    : m_data(data), m_size(size), m_factory(std::move(factory))
{
    m_loadedIndex.push_back(kNoClass); // index 0: no object
}

void CArchive::Fail(ArchiveError::Kind kind, const std::string& detail) const
{
    throw ArchiveError(kind, CurrentRecord(), m_pos, detail);
}

void CArchive::FailEndOfFile() const { Fail(ArchiveError::endOfFile, "unexpected end of file"); }

void CArchive::WriteLengthPrefix(size_t len)
{
    if (len < 0xFF)
        WriteU8(uint8_t(len));
    else if (len < 0xFFFE)
    {
        WriteU8(0xFF);
        WriteU16(uint16_t(len));
    }
    else
    {
        WriteU8(0xFF);
        WriteU16(0xFFFF);
        WriteU32(uint32_t(len));
    }
}

void CArchive::WriteString(std::string_view utf8)
{
    bool ascii = true;
    for (char c : utf8)
        if (static_cast<unsigned char>(c) >= 0x80)
        {
            ascii = false;
            break;
        }
    if (ascii)
    {
        WriteLengthPrefix(utf8.size());
        WriteBytes(utf8.data(), utf8.size());
        return;
    }
    // What the code page can hold is written in it, so that such files stay exactly as
    // they were; any other text takes the 16-bit form rather than losing characters.
    std::string converted;
    if (Utf8ToCp1252Exactly(utf8, converted))
    {
        WriteLengthPrefix(converted.size());
        WriteBytes(converted.data(), converted.size());
        return;
    }
    const std::vector<uint8_t> units = Utf8ToUtf16Le(utf8);
    WriteU8(0xFF);
    WriteU16(0xFFFE);
    WriteLengthPrefix(units.size() / 2);
    WriteBytes(units.data(), units.size());
}

void CArchive::WriteDate(const CDateTime& d)
{
    WriteU32(d.GetStatus());
    WriteF64(d.GetValue());
}

void CArchive::WriteCount(uint32_t count)
{
    if (count < 0xFFFF)
        WriteU16(uint16_t(count));
    else
    {
        WriteU16(0xFFFF);
        WriteU32(count);
    }
}

void CArchive::WriteIdArray(const std::vector<uint32_t>& ids)
{
    WriteCount(uint32_t(ids.size()));
    for (uint32_t id : ids)
        WriteU32(id);
}

uint32_t CArchive::StoredClassIndex(const char* name) const
{
    for (const StoredClass& c : m_storedClasses)
        if (c.address == name)
            return c.index;
    return 0;
}

void CArchive::WriteObject(CObject& obj)
{
    const char* name = obj.GetClassName();
    uint32_t classIndex = StoredClassIndex(name);
    if (classIndex == 0)
    {
        // The same name may live at another address (another translation unit).
        for (const StoredClass& c : m_storedClasses)
            if (c.name == name)
            {
                classIndex = c.index;
                m_storedClasses.push_back({name, c.name, c.index});
                break;
            }
    }
    if (classIndex == 0)
    {
        const size_t len = std::strlen(name);
        WriteU16(kNewClassTag);
        WriteU16(0); // schema: versioning lives in each body's own version field
        WriteU16(uint16_t(len));
        WriteBytes(name, len);
        m_storedClasses.push_back({name, std::string(name, len), m_mapCount++});
    }
    else if (classIndex < kBigObjectTag)
        WriteU16(uint16_t(kClassTag | classIndex));
    else
    {
        WriteU16(kBigObjectTag);
        WriteU32(kBigClassTag | classIndex);
    }
    ++m_mapCount; // the object takes the next index
    obj.Serialize(*this);
}

uint32_t CArchive::ReadLengthPrefix(bool& unicode)
{
    const uint8_t b = ReadU8();
    if (b < 0xFF)
        return b;
    const uint16_t w = ReadU16();
    if (w == 0xFFFE && !unicode)
    {
        // Marker of a 16-bit text: its own length prefix follows, counted in characters.
        unicode = true;
        return ReadLengthPrefix(unicode);
    }
    if (w < 0xFFFF)
        return w;
    return ReadU32();
}

std::string CArchive::ReadString()
{
    bool unicode = false;
    const uint32_t len = ReadLengthPrefix(unicode);
    if (unicode)
    {
        Need(size_t(len) * 2);
        std::string s = Utf16LeToUtf8(m_data + m_pos, len);
        m_pos += size_t(len) * 2;
        return s;
    }
    Need(len);
    const char* p = reinterpret_cast<const char*>(m_data + m_pos);
    m_pos += len;
    for (uint32_t i = 0; i < len; ++i)
        if (static_cast<unsigned char>(p[i]) >= 0x80)
            return Cp1252ToUtf8(std::string_view(p, len));
    return std::string(p, len);
}

CDateTime CArchive::ReadDate()
{
    const uint32_t status = ReadU32();
    const double value = ReadF64();
    if (status == CDateTime::null)
        return CDateTime(0.0, CDateTime::null);
    if (status != CDateTime::valid)
        return CDateTime(value, CDateTime::invalid);
    // A valid date far outside any calendar would make every later computation meaningless.
    if (!(value > -657435.0 && value < 2958466.0))
        return CDateTime(0.0, CDateTime::invalid);
    return CDateTime(value, CDateTime::valid);
}

CDateTime CArchive::ReadOldDate(bool zeroIsNull)
{
    const uint32_t secs = ReadU32();
    if (zeroIsNull && secs == 0)
        return CDateTime::Null();
    return CDateTime::FromUnixLocal(secs);
}

uint32_t CArchive::ReadCount()
{
    const uint16_t w = ReadU16();
    if (w != 0xFFFF)
        return w;
    return ReadU32();
}

std::vector<uint32_t> CArchive::ReadIdArray()
{
    const uint32_t n = ReadCount();
    // Each element takes 4 bytes: refuse a count the stream cannot hold before allocating.
    Need(size_t(n) * 4);
    std::vector<uint32_t> ids;
    ids.reserve(n);
    for (uint32_t i = 0; i < n; ++i)
        ids.push_back(ReadU32());
    return ids;
}

uint32_t CArchive::ReadVersion(const char* record, uint32_t lowest, uint32_t highest)
{
    const uint64_t at = m_pos;
    const uint32_t v = ReadU32();
    if (v < lowest || v > highest)
        throw ArchiveError(ArchiveError::badSchema, record, at,
                           std::string(record) + " record version " + std::to_string(v) +
                               " is not supported");
    return v;
}

std::unique_ptr<CObject> CArchive::ReadObject(std::string_view expected)
{
    return ReadObject(&expected, 1);
}

std::unique_ptr<CObject> CArchive::ReadObject(const std::vector<std::string_view>& accepted)
{
    return ReadObject(accepted.data(), accepted.size());
}

std::unique_ptr<CObject> CArchive::ReadObject(const std::string_view* accepted, size_t count)
{
    auto isAccepted = [&](std::string_view name) {
        for (size_t i = 0; i < count; ++i)
            if (accepted[i] == name)
                return true;
        return false;
    };
    const std::string expectedName = count ? std::string(accepted[0]) : std::string("record");

    const uint64_t tagAt = m_pos;
    const uint16_t wTag = ReadU16();
    uint8_t classSlot = kNoClass;
    bool newClass = false;
    if (wTag == kNewClassTag)
    {
        ReadU16(); // schema number: any value is accepted
        const uint16_t nameLen = ReadU16();
        Need(nameLen);
        const std::string_view name(reinterpret_cast<const char*>(m_data + m_pos), nameLen);
        m_pos += nameLen;
        if (!isAccepted(name))
            throw ArchiveError(ArchiveError::badClass, CurrentRecord(), tagAt,
                               "found a " + (name.empty() ? std::string("nameless") : std::string(name)) +
                                   " record where a " + expectedName + " was expected");
        for (size_t i = 0; i < m_loadedClasses.size(); ++i)
            if (m_loadedClasses[i] == name)
                classSlot = uint8_t(i);
        if (classSlot == kNoClass)
        {
            if (m_loadedClasses.size() >= kNoClass)
                Fail(ArchiveError::badFormat, "too many record classes in the stream");
            classSlot = uint8_t(m_loadedClasses.size());
            m_loadedClasses.emplace_back(name);
        }
        newClass = true;
    }
    else
    {
        uint32_t obTag;
        if (wTag == kBigObjectTag)
            obTag = ReadU32();
        else
            obTag = (uint32_t(wTag & kClassTag) << 16) | (wTag & ~kClassTag);

        if (obTag & kBigClassTag)
        {
            const uint32_t classIndex = obTag & ~kBigClassTag;
            if (classIndex == 0 || classIndex >= m_loadedIndex.size() ||
                !(m_loadedIndex[classIndex] & kIsClassBit))
                throw ArchiveError(ArchiveError::badClass, CurrentRecord(), tagAt,
                                   "class index " + std::to_string(classIndex) +
                                       " was not registered");
            classSlot = uint8_t(m_loadedIndex[classIndex] & ~kIsClassBit);
            if (!isAccepted(m_loadedClasses[classSlot]))
                throw ArchiveError(ArchiveError::badClass, CurrentRecord(), tagAt,
                                   "found a " + m_loadedClasses[classSlot] + " record where a " +
                                       expectedName + " was expected");
        }
        else
        {
            if (obTag == kNullTag)
                return nullptr;
            if (obTag >= m_loadedIndex.size() || (m_loadedIndex[obTag] & kIsClassBit))
                throw ArchiveError(ArchiveError::badClass, CurrentRecord(), tagAt,
                                   "object index " + std::to_string(obTag) +
                                       " was not registered");
            const std::string& refClass = m_loadedClasses[m_loadedIndex[obTag]];
            if (!isAccepted(refClass))
                throw ArchiveError(ArchiveError::badClass, CurrentRecord(), tagAt,
                                   "reference to a " + refClass + " where a " + expectedName +
                                       " was expected");
            return nullptr;
        }
    }

    const std::string& className = m_loadedClasses[classSlot];
    std::unique_ptr<CObject> obj = m_factory ? m_factory(className) : nullptr;
    if (!obj)
        throw ArchiveError(ArchiveError::badClass, CurrentRecord(), tagAt,
                           "unknown record class " + className);
    if (m_loadedIndex.size() >= kMaxMapCount)
        Fail(ArchiveError::badFormat, "too many objects in the stream");
    if (newClass)
        m_loadedIndex.push_back(uint8_t(classSlot | kIsClassBit));
    m_loadedIndex.push_back(classSlot);

    const std::string* outer = m_currentRecord;
    m_currentRecord = &className;
    obj->Serialize(*this);
    m_currentRecord = outer;
    return obj;
}
