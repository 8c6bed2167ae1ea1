#include "archive_writer.h"

#include <cstring>
#include <limits>
#include <stdexcept>

#include "foundation/archive_format.h"
#include "stream_encoder.h"

namespace iconpack {
namespace {

struct Block {
    uint32_t offset = 0;
    uint32_t storedSize = 0;
};

// What is stored for a text. A stream of the text's own size would be taken for plain text.
std::vector<uint8_t> MakeBlock(const std::string& text) {
    std::vector<uint8_t> stream = EncodeStream({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    if (stream.size() < text.size())
        return stream;
    return {text.begin(), text.end()};
}

CVrArchiveRecord MakeRecord(const std::string& name, const std::string& text, const Block& block) {
    if (name.size() >= kArchiveNameSize)
        throw std::runtime_error(name + ": the name has 64 bytes or more");
    CVrArchiveRecord record = {};
    memcpy(record.name, name.data(), name.size());
    record.offset = block.offset;
    record.originalSize = static_cast<uint32_t>(text.size());
    record.storedSize = block.storedSize;
    return record;
}

class Writer {
public:
    explicit Writer(const Texts& texts)
        : m_directorySize(sizeof(CVrArchiveHeader) + texts.size() * sizeof(CVrArchiveRecord)) {
        AppendTo(m_directory, CVrArchiveHeader{kArchiveMagic, static_cast<uint32_t>(texts.size())});
        for (const auto& [name, text] : texts)
            AppendTo(m_directory, MakeRecord(name, text, BlockOf(text)));
    }

    size_t GetBlockCount() const { return m_blocks.size(); }

    std::vector<uint8_t> Take() {
        m_directory.insert(m_directory.end(), m_data.begin(), m_data.end());
        return std::move(m_directory);
    }

private:
    const Block& BlockOf(const std::string& text) {
        auto [entry, isNew] = m_blocks.try_emplace(text);
        if (isNew)
            entry->second = Store(MakeBlock(text), text.size());
        return entry->second;
    }

    Block Store(const std::vector<uint8_t>& bytes, size_t textSize) {
        size_t offset = m_directorySize + m_data.size();
        if (offset + bytes.size() >= std::numeric_limits<uint32_t>::max())
            throw std::runtime_error("the archive is too large");
        m_data.insert(m_data.end(), bytes.begin(), bytes.end());
        if (bytes.size() == textSize)
            m_data.push_back(0); // plain text is used in place
        return {static_cast<uint32_t>(offset), static_cast<uint32_t>(bytes.size())};
    }

    template <typename T>
    static void AppendTo(std::vector<uint8_t>& bytes, const T& value) {
        size_t at = bytes.size();
        bytes.resize(at + sizeof(T));
        memcpy(bytes.data() + at, &value, sizeof(T));
    }

    size_t m_directorySize;
    std::vector<uint8_t> m_directory;
    std::vector<uint8_t> m_data;
    std::map<std::string, Block> m_blocks; // by text
};

PackReport Summarize(const std::vector<uint8_t>& archive, size_t names, size_t blocks) {
    PackReport report{names, blocks, 0, 0, archive.size()};
    for (size_t i = 0; i < names; i++) {
        CVrArchiveRecord record;
        memcpy(&record, archive.data() + sizeof(CVrArchiveHeader) + i * sizeof(record), sizeof(record));
        report.original += record.originalSize;
        report.stored += record.storedSize;
    }
    return report;
}

} // namespace

std::vector<uint8_t> WriteArchive(const Texts& texts, PackReport& report) {
    if (texts.empty())
        throw std::runtime_error("there is nothing to pack");
    Writer writer(texts);
    size_t blocks = writer.GetBlockCount();
    std::vector<uint8_t> archive = writer.Take();
    report = Summarize(archive, texts.size(), blocks);
    return archive;
}

} // namespace iconpack
