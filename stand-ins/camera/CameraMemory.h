#pragma once

#include "stand-ins/camera/CameraRegisters.h"

#include <QByteArray>

#include <vector>

namespace emulated_camera {

/// The memory of the device: bootstrap registers, its own registers and its description, with the rights of
/// access that hold for every client. Who may write at all is decided elsewhere. Words are big-endian,
/// addresses count bytes. [one thread at a time]
class CameraMemory {
public:
    /// @param description what a client finds at the first URL.
    /// @param fileName of the description.
    CameraMemory(const QByteArray& description, const QByteArray& fileName);

    /// Registers get their initial values, but for those that keep theirs without power.
    void powerOn();

    /// What a client reads. A reserved word within a block and a register that is write-only read 0.
    /// @returns a status; @p data is untouched where it isn't success.
    quint16 read(quint32 address, quint32 sizeBytes, QByteArray& data) const;
    /// @returns the status that the write of one word would have.
    quint16 checkWrite(quint32 address, quint32 value) const;
    /// Writes the word if checkWrite() says success. The value of a register that is write-only is kept too.
    quint16 write(quint32 address, quint32 value);

    /// The device's own access, which has no rules. The address must be one of a register.
    quint32 number(quint32 address) const;
    void setNumber(quint32 address, quint32 value);
    /// Cuts the text to the field, and fills up with zeros.
    void setText(quint32 address, const QByteArray& text);

private:
    struct Block {
        quint32 address;
        QByteArray bytes;
    };
    const Block* find(quint32 address, quint32 sizeBytes) const;
    char* at(quint32 address, quint32 sizeBytes);
    void setInitial(bool keptToo);

    std::vector<Block> m_blocks;
};

} // namespace emulated_camera
