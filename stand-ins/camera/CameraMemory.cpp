#include "stand-ins/camera/CameraMemory.h"

#include "stand-ins/camera/GvcpStatus.h"

#include <QtEndian>

#include <algorithm>

namespace emulated_camera {

namespace {

constexpr quint32 bootstrapSizeBytes = 0x0e00; // up to and with the first stream channel

QByteArray zeros(quint32 sizeBytes)
{
    return QByteArray(int(sizeBytes), '\0');
}

// Clients read whole words.
QByteArray paddedToWords(QByteArray bytes)
{
    while (bytes.size() % int(wordSizeBytes) != 0)
        bytes += '\0';
    return bytes;
}

} // namespace

CameraMemory::CameraMemory(const QByteArray& description, const QByteArray& fileName)
    : m_blocks{{0, zeros(bootstrapSizeBytes)},
               {Register::ActionGroupKey, zeros(actionSignalsMax * actionStrideBytes)},
               {Register::Width, zeros(Register::ActionCount + wordSizeBytes - Register::Width)},
               {Register::UserBlock, zeros(userBlockSizeBytes)},
               {Register::Description, paddedToWords(description)}}
{
    setInitial(true);
    setText(Register::FirstUrl, "Local:" + fileName + ';' + QByteArray::number(Register::Description, 16) +
                                    ';' + QByteArray::number(description.size(), 16));
}

void CameraMemory::powerOn()
{
    setInitial(false);
}

void CameraMemory::setInitial(bool keptToo)
{
    for (const RegisterField& each : registerTable())
        if (each.sizeBytes == wordSizeBytes && (keptToo || !each.isKept))
            setNumber(each.address, each.initial);
    setText(Register::UserBlock, {});
}

quint16 CameraMemory::read(quint32 address, quint32 sizeBytes, QByteArray& data) const
{
    if (address % wordSizeBytes != 0 || sizeBytes % wordSizeBytes != 0)
        return GvcpStatus::BadAlignment;
    const Block* const block = find(address, sizeBytes);
    if (block == nullptr)
        return GvcpStatus::InvalidAddress;
    data = block->bytes.mid(int(address - block->address), int(sizeBytes));
    for (const RegisterField& each : registerTable())
        if (each.access == Access::WriteOnly && each.address >= address && each.address - address < sizeBytes)
            std::fill_n(data.begin() + int(each.address - address), wordSizeBytes, '\0');
    return GvcpStatus::Success;
}

quint16 CameraMemory::checkWrite(quint32 address, quint32 value) const
{
    if (address % wordSizeBytes != 0)
        return GvcpStatus::BadAlignment;
    if (find(address, wordSizeBytes) == nullptr)
        return GvcpStatus::InvalidAddress;
    const RegisterField* const field = findRegister(address);
    if (field == nullptr || field->access == Access::ReadOnly)
        return GvcpStatus::WriteProtect;
    const bool isInRange = value >= field->least && value <= field->most;
    const bool isInChoice =
        field->choice.empty() || std::count(field->choice.begin(), field->choice.end(), value) != 0;
    if (!isInRange || !isInChoice)
        return GvcpStatus::InvalidParameter;
    if (field->isLocked && number(Register::AcquisitionStatus) != 0)
        return GvcpStatus::Busy;
    return GvcpStatus::Success;
}

quint16 CameraMemory::write(quint32 address, quint32 value)
{
    const quint16 status = checkWrite(address, value);
    if (status == GvcpStatus::Success)
        setNumber(address, value);
    return status;
}

quint32 CameraMemory::number(quint32 address) const
{
    const Block* const block = find(address, wordSizeBytes);
    Q_ASSERT(block != nullptr);
    return qFromBigEndian<quint32>(block->bytes.constData() + (address - block->address));
}

void CameraMemory::setNumber(quint32 address, quint32 value)
{
    qToBigEndian(value, at(address, wordSizeBytes));
}

void CameraMemory::setText(quint32 address, const QByteArray& text)
{
    const RegisterField* const field = findRegister(address);
    Q_ASSERT(field != nullptr);
    const QByteArray padded = text.leftJustified(int(field->sizeBytes), '\0', true);
    std::copy(padded.begin(), padded.end(), at(address, field->sizeBytes));
}

const CameraMemory::Block* CameraMemory::find(quint32 address, quint32 sizeBytes) const
{
    const auto found = std::find_if(m_blocks.begin(), m_blocks.end(), [=](const Block& each) {
        const quint32 size = quint32(each.bytes.size());
        return address >= each.address && sizeBytes <= size && address - each.address <= size - sizeBytes;
    });
    return found != m_blocks.end() ? &*found : nullptr;
}

char* CameraMemory::at(quint32 address, quint32 sizeBytes)
{
    const Block* const block = find(address, sizeBytes);
    Q_ASSERT(block != nullptr);
    return m_blocks[std::size_t(block - m_blocks.data())].bytes.data() + (address - block->address);
}

} // namespace emulated_camera
