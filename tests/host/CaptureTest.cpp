#include "host/CaptureReader.h"
#include "host/CaptureWriter.h"
#include "host/Failure.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace mesk::host;
using testing::HasSubstr;

namespace {

class Capture : public testing::Test {
protected:
    std::string path(const char* name) const
    {
        return folder.filePath(QString::fromLatin1(name)).toStdString();
    }
    std::string put(const char* name, const QByteArray& bytes) const
    {
        QFile file(QString::fromStdString(path(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return path(name);
    }
    /// Reads all frames; gives the failure's text, empty for none.
    static std::string readAll(const std::string& file, std::vector<QByteArray>& frames)
    {
        frames.clear();
        try {
            CaptureReader reader(file);
            for (QByteArray frame; reader.next(frame);) {
                frames.push_back(frame);
            }
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "";
    }

    QTemporaryDir folder;
    const std::vector<QByteArray> sent = {QByteArray(60, 'a'), QByteArray(1518, 'b'), QByteArray(61, 'c')};
    std::vector<QByteArray> frames;
};

TEST_F(Capture, givesBackWhatWasWrittenAndAllThatStandsBeforeDamage)
{
    {
        CaptureWriter writer(path("whole.pcap"));
        for (const QByteArray& frame : sent) {
            writer.write(frame);
        }
        writer.close();
    }
    EXPECT_EQ(readAll(path("whole.pcap"), frames), "");
    EXPECT_EQ(frames, sent);

    QFile file(QString::fromStdString(path("whole.pcap")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    const int lastRecordBytes = 16 + 61;
    for (int cut = 1; cut < lastRecordBytes; ++cut) {
        const std::string text = readAll(put("cut.pcap", whole.left(whole.size() - cut)), frames);
        EXPECT_THAT(text, HasSubstr("cut.pcap: can't be read behind frame 2: ")) << cut;
        EXPECT_EQ(frames.size(), 2U) << cut;
    }
    QByteArray other = whole;
    other[20] = 113; // the link type of "any" devices
    EXPECT_THAT(readAll(put("other.pcap", other), frames), HasSubstr("link type LINUX_SLL"));
    EXPECT_THAT(readAll(put("text.pcap", "no capture at all, but words"), frames), HasSubstr("no capture"));
    EXPECT_THAT(readAll(put("empty.pcap", ""), frames), HasSubstr("no capture"));
    EXPECT_THAT(readAll(path("missing.pcap"), frames), HasSubstr("missing.pcap: No such file"));
    EXPECT_THROW(CaptureWriter(path("no/such/folder.pcap")), Failure);
}

TEST_F(Capture, readsTheNewerFormat)
{
    const QByteArray section =
        QByteArray::fromHex("0a0d0d0a 1c000000 4d3c2b1a 0100 0000 ffffffffffffffff 1c000000");
    const QByteArray interface = QByteArray::fromHex("01000000 14000000 0100 0000 00000400 14000000");
    const QByteArray packet =
        QByteArray::fromHex("06000000 30000000 00000000 00000000 00000000 0e000000 0e000000"
                            "ffffffffffff 024b00000001 0806 0000 30000000");
    EXPECT_EQ(readAll(put("new.pcapng", section + interface + packet + packet), frames), "");
    const std::vector<QByteArray> both(2, QByteArray::fromHex("ffffffffffff024b000000010806"));
    EXPECT_EQ(frames, both);
    const QByteArray another = QByteArray::fromHex("01000000 14000000 7100 0000 00000400 14000000");
    EXPECT_THAT(readAll(put("two.pcapng", section + interface + packet + packet + another), frames),
                HasSubstr("two.pcapng: can't be read behind frame 2: "));
    EXPECT_EQ(frames, both);
}

} // namespace
