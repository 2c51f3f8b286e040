// A stream that keeps edits apart does to the bytes what TagLib's own file stream does.

#include "tests/support/temporary_folder.h"
#include "vantaro/safe_write/edit_stream.h"

#include <gtest/gtest.h>

#include <tfilestream.h>

#include <fcntl.h>

#include <random>

namespace vantaro::core {
namespace {

std::string applied(const FileEdit& edit, const std::string& old_bytes) {
    std::string result;
    std::uint64_t place = 0;
    for (const Splice& splice : edit.splices) {
        EXPECT_GE(splice.offset, place);
        result += old_bytes.substr(place, splice.offset - place) + splice.bytes;
        place = splice.end();
    }
    return result + old_bytes.substr(place);
}

TagLib::ByteVector vector(const std::string& bytes) {
    return {bytes.data(), static_cast<unsigned>(bytes.size())};
}

class EditStreamTest : public testing::Test {
protected:
    OpenFile open(const std::string& bytes) {
        return OpenFile::open(real_system_calls(), folder.write("old", bytes), O_RDONLY);
    }
    std::string random_bytes(std::size_t size) {
        std::string bytes(size, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>('a' + random(3)); // so that equal runs come about
        return bytes;
    }
    std::size_t random(std::size_t limit) { return engine() % limit; }

    test::TemporaryFolder folder;
    std::mt19937 engine{7};
};

TEST_F(EditStreamTest, DoesWhatAFileStreamDoes) {
    for (int round = 0; round < 300; ++round) {
        const std::string old_bytes = random_bytes(random(5000));
        const OpenFile file = open(old_bytes);
        EditStream edited(file);
        TagLib::FileStream plain(folder.write("plain", old_bytes).c_str());
        for (int step = 0; step < 12; ++step) {
            const auto length = static_cast<std::size_t>(plain.length());
            const auto place = random(length + 1);
            const TagLib::ByteVector data = vector(random_bytes(1 + random(2000)));
            for (TagLib::IOStream* stream :
                 {static_cast<TagLib::IOStream*>(&edited), static_cast<TagLib::IOStream*>(&plain)}) {
                const std::size_t size = place % 700;
                stream->seek(static_cast<long>(place), TagLib::IOStream::Beginning);
                switch ((round + step * 7) % 5) {
                case 0:
                    stream->writeBlock(data);
                    break;
                case 1:
                    stream->insert(data, place, std::min(size, length - place));
                    break;
                case 2:
                    stream->insert(data, place, std::min<std::size_t>(data.size(), length - place));
                    break;
                case 3:
                    stream->removeBlock(place, std::min(size, length - place));
                    break;
                default:
                    stream->truncate(static_cast<long>(place > 40 ? place - 40 : place));
                }
            }
            ASSERT_EQ(edited.length(), plain.length());
            const auto start = static_cast<long>(random(static_cast<std::size_t>(plain.length()) + 1));
            edited.seek(-start, TagLib::IOStream::End);
            plain.seek(-start, TagLib::IOStream::End);
            const TagLib::ByteVector read = edited.readBlock(1500);
            ASSERT_EQ(read, plain.readBlock(1500));
        }
        plain.seek(0, TagLib::IOStream::Beginning);
        const TagLib::ByteVector all = plain.readBlock(static_cast<unsigned long>(plain.length()));
        ASSERT_EQ(applied(edited.edit(), old_bytes), std::string(all.data(), all.size())) << round;
        ASSERT_EQ(folder.read("old"), old_bytes);
    }
}

TEST_F(EditStreamTest, OnlyDifferencesCount) {
    const std::string old_bytes = "head" + std::string(5000, 'x') + "tail";
    const OpenFile file = open(old_bytes);
    EditStream same(file);
    same.insert(vector(old_bytes), 0, old_bytes.size());
    same.seek(4, TagLib::IOStream::Beginning);
    same.writeBlock(vector(std::string(100, 'x')));
    EXPECT_TRUE(same.edit().empty());

    EditStream few(file);
    std::string changed = old_bytes;
    changed[10] = changed[12] = changed[3000] = '-';
    few.insert(vector(changed), 0, changed.size());
    EXPECT_EQ(few.edit().splices, (std::vector<Splice>{{10, 3, "-x-"}, {3000, 1, "-"}}));

    EditStream longer(file);
    longer.insert(vector("head+" + std::string(20, 'x')), 0, 24);
    EXPECT_EQ(longer.edit().splices, (std::vector<Splice>{{4, 0, "+"}}));
}

TEST_F(EditStreamTest, AFileThatCannotBeReadIsNoShorterFile) {
    class Broken : public SystemCalls {
    public:
        bool is_broken = false;

    protected:
        int fault(SystemCall call, std::size_t&) override {
            return is_broken && call == SystemCall::read ? EIO : 0;
        }
    } calls;
    const OpenFile file = OpenFile::open(calls, folder.write("old", std::string(100, 'x')), O_RDONLY);
    EditStream stream(file);
    calls.is_broken = true;
    EXPECT_TRUE(stream.readBlock(10).isEmpty());
    calls.is_broken = false;
    stream.insert(vector("y"), 0, 0);
    EXPECT_THROW(stream.edit(), std::exception);
}

} // namespace
} // namespace vantaro::core
