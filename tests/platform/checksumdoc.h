#pragma once

#include "model/shareddoc.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// A stand-in document for the shared-file tests: a numbered generation of contents
// whose every byte is covered by a checksum, so a torn or truncated file never loads.
class CChecksumDoc : public CSharedDoc
{
public:
    // `size` payload bytes derived from `generation`.
    void SetGeneration(uint32_t generation, size_t size = 64)
    {
        m_generation = generation;
        m_size = size;
    }
    uint32_t GetGeneration() const { return m_generation; }
    int Loads() const { return m_loads; }

protected:
    bool ReadFromBytes(const std::vector<uint8_t>& bytes, platform::Prompter& prompter) override
    {
        ++m_loads;
        if (bytes.size() < 16 || std::memcmp(bytes.data(), "QVTS", 4) != 0)
            return Fail(prompter);
        const uint32_t generation = Get32(bytes, 4);
        const uint32_t size = Get32(bytes, 8);
        if (bytes.size() != size_t(size) + 16 || Get32(bytes, 12 + size) != Checksum(bytes, 12 + size))
            return Fail(prompter);
        const uint8_t* payload = bytes.data() + 12;
        for (uint32_t i = 0; i < size; ++i)
            if (payload[i] != Pattern(generation, i))
                return Fail(prompter);
        m_generation = generation;
        m_size = size;
        return true;
    }

    std::vector<uint8_t> WriteToBytes() override
    {
        std::vector<uint8_t> out{'Q', 'V', 'T', 'S'};
        out.reserve(m_size + 16);
        Put32(out, m_generation);
        Put32(out, uint32_t(m_size));
        out.resize(12 + m_size);
        uint8_t* payload = out.data() + 12;
        for (size_t i = 0; i < m_size; ++i)
            payload[i] = Pattern(m_generation, i);
        Put32(out, Checksum(out, out.size()));
        return out;
    }

private:
    bool Fail(platform::Prompter& prompter)
    {
        prompter.ShowMessage("damaged test document");
        return false;
    }
    static uint8_t Pattern(uint32_t generation, size_t i) { return uint8_t(generation * 31 + i * 7); }
    static uint32_t Get32(const std::vector<uint8_t>& b, size_t at)
    {
        return uint32_t(b[at]) | uint32_t(b[at + 1]) << 8 | uint32_t(b[at + 2]) << 16 |
               uint32_t(b[at + 3]) << 24;
    }
    static void Put32(std::vector<uint8_t>& b, uint32_t v)
    {
        for (int k = 0; k < 4; ++k)
            b.push_back(uint8_t(v >> (8 * k)));
    }
    static uint32_t Checksum(const std::vector<uint8_t>& b, size_t n)
    {
        uint32_t h = 2166136261u;
        const uint8_t* p = b.data();
        for (size_t i = 0; i < n; ++i)
            h = (h ^ p[i]) * 16777619u;
        return h;
    }

    uint32_t m_generation = 0;
    size_t m_size = 64;
    int m_loads = 0;
};
