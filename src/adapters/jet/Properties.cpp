#include "adapters/jet/Properties.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "adapters/jet/Definition.h"
#include "adapters/jet/TextCodes.h"

namespace nomira::jet {
namespace {

constexpr std::array<std::uint8_t, 4> kJet3Mark{'K', 'K', 'D', 0};
constexpr std::array<std::uint8_t, 4> kJet4Mark{'M', 'R', '2', 0};

constexpr std::uint16_t kNames = 0x80;  // the kind of the block that names properties
constexpr std::size_t kBlockHead = 6;   // its length, its kind
constexpr std::size_t kNameHead = 6;    // the length of this part, the length of the name
constexpr std::size_t kValueHead = 8;   // whole length, flags, type, name, length

const std::array<std::uint8_t, 4>& MarkOf(Generation generation) {
    return generation == Generation::Jet3 ? kJet3Mark : kJet4Mark;
}

bool IsText(std::uint8_t nType) {
    return nType == static_cast<std::uint8_t>(ColumnType::Text) ||
           nType == static_cast<std::uint8_t>(ColumnType::Memo);
}

// Raises Damaged where the blob contradicts itself.
class Reader {
  public:
    explicit Reader(Generation generation) : m_generation(generation) {}

    Properties Read(ByteView bytes) {
        const auto& mark = MarkOf(m_generation);
        const ByteView found = Part(bytes, 0, mark.size());
        if (!std::equal(mark.begin(), mark.end(), found.begin())) Refuse();
        for (std::size_t n = mark.size(); n < bytes.size();) {
            const std::size_t nLength = LoadU32(bytes, n);
            if (nLength < kBlockHead) Refuse();
            ReadBlock(LoadU16(bytes, n + 4), Part(bytes, n + kBlockHead, nLength - kBlockHead));
            n += nLength;
        }
        return std::move(m_properties);
    }

  private:
    [[noreturn]] static void Refuse() { Fail(FailureKind::Damaged, "properties make no sense"); }

    void ReadBlock(std::uint16_t nKind, ByteView block) {
        if (nKind == kNames)
            ReadNames(block);
        else
            ReadValues(nKind, block);
    }

    void ReadNames(ByteView block) {
        for (std::size_t n = 0; n < block.size();) {
            const std::size_t nLength = LoadU16(block, n);
            m_properties.names.push_back(DecodeText(Part(block, n + 2, nLength), m_generation));
            n += 2 + nLength;
        }
    }

    void ReadValues(std::uint16_t nKind, ByteView block) {
        PropertyBlock& made = m_properties.blocks.emplace_back();
        made.nKind = nKind;
        const std::size_t nNamePart = LoadU32(block, 0);
        const std::size_t nName = LoadU16(block, 4);
        if (nNamePart != kNameHead + nName) Refuse();
        made.sName = DecodeText(Part(block, kNameHead, nName), m_generation);
        for (std::size_t n = nNamePart; n < block.size();) {
            made.properties.push_back(ReadValue(block, n));
            n += LoadU16(block, n);
        }
    }

    Property ReadValue(ByteView block, std::size_t nPlace) const {
        Property property;
        property.nFlags = LoadU8(block, nPlace + 2);
        property.nType = LoadU8(block, nPlace + 3);
        property.nName = LoadU16(block, nPlace + 4);
        const std::size_t nLength = LoadU16(block, nPlace + 6);
        if (LoadU16(block, nPlace) != kValueHead + nLength ||
            property.nName >= m_properties.names.size())
            Refuse();
        const ByteView data = Part(block, nPlace + kValueHead, nLength);
        if (IsText(property.nType))
            property.value = DecodeText(data, m_generation);
        else
            property.value = Bytes(data.begin(), data.end());
        return property;
    }

    Generation m_generation;
    Properties m_properties;
};

// Raises Unsupported for what the generation can't hold.
class Writer {
  public:
    explicit Writer(Generation generation) : m_generation(generation) {}

    Bytes Write(const Properties& properties) {
        Append(m_bytes, MarkOf(m_generation));
        AddBlock(kNames, [&] {
            for (const std::u16string& sName : properties.names)
                AddText(sName);
        });
        for (const PropertyBlock& block : properties.blocks)
            AddBlock(block.nKind, [&] {
                const Bytes name = Encoded(block.sName);
                AppendLittle<4>(m_bytes, kNameHead + name.size());
                AddText(block.sName);
                for (const Property& property : block.properties)
                    AddValue(property);
            });
        return std::move(m_bytes);
    }

  private:
    Bytes Encoded(std::u16string_view sText) const {
        auto bytes = EncodeText(sText, m_generation, false);
        if (!bytes || bytes->size() > std::numeric_limits<std::uint16_t>::max() - kValueHead)
            Fail(FailureKind::Unsupported, "a text of the properties can't be stored");
        return std::move(*bytes);
    }

    void AddText(std::u16string_view sText) {
        const Bytes bytes = Encoded(sText);
        AppendLittle<2>(m_bytes, bytes.size());
        Append(m_bytes, bytes);
    }

    template <typename Content>
    void AddBlock(std::uint16_t nKind, Content addContent) {
        const std::size_t nStart = m_bytes.size();
        AppendLittle<4>(m_bytes, 0);
        AppendLittle<2>(m_bytes, nKind);
        addContent();
        StoreU32(m_bytes, nStart, static_cast<std::uint32_t>(m_bytes.size() - nStart));
    }

    void AddValue(const Property& property) {
        const auto* sText = std::get_if<std::u16string>(&property.value);
        const Bytes data = sText != nullptr ? Encoded(*sText) : std::get<Bytes>(property.value);
        AppendLittle<2>(m_bytes, kValueHead + data.size());
        AppendLittle<1>(m_bytes, property.nFlags);
        AppendLittle<1>(m_bytes, property.nType);
        AppendLittle<2>(m_bytes, property.nName);
        AppendLittle<2>(m_bytes, data.size());
        Append(m_bytes, data);
    }

    Generation m_generation;
    Bytes m_bytes;
};

template <typename Work>
auto NothingOnFailure(Work work) -> std::optional<decltype(work())> {
    try {
        return work();
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace

std::optional<Properties> ReadProperties(ByteView bytes, Generation generation) {
    return NothingOnFailure([&] { return Reader(generation).Read(bytes); });
}

std::optional<Bytes> WriteProperties(const Properties& properties, Generation generation) {
    return NothingOnFailure([&] { return Writer(generation).Write(properties); });
}

}  // namespace nomira::jet
