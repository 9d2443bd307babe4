#pragma once

#include "tests/stand-ins/EmulatedBoard.h"

#include <chrono>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// The board through its two libraries, as its users have it.
namespace mesk::tests {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint32_t>;

/// An operation of one of the two libraries, of whatever type it is taken for.
struct Operation {
    const char* name;

    template <typename Function>
    operator Function*() const // NOLINT(google-explicit-constructor): the type is that of the field
    {
        const char* const library = *name == 'K' ? MESK_TEST_BIN "/kivo_hal.so" : MESK_TEST_BIN "/dovrt.so";
        void* const handle = ::dlopen(library, RTLD_NOW);
        void* const found = handle != nullptr ? ::dlsym(handle, name) : nullptr;
        if (found == nullptr)
            throw std::runtime_error(std::string("no ") + name);
        return reinterpret_cast<Function*>(found);
    }
};

struct Operations {
    using Handle = std::uint64_t;
    using Status = std::int32_t;
    using Id = std::uint32_t;
    Handle (*init)(std::uint32_t board) = Operation{"KHalInitDevice"};
    Status (*free)(Handle) = Operation{"KHalFreeDevice"};
    std::uint32_t (*count)() = Operation{"KHalGetDeviceCount"};
    std::int32_t (*infoInt)(Handle, const char* key) = Operation{"KHalGetBoardInfoInt"};
    Status (*configure)(Handle, Handle design) = Operation{"KHalConfigureFpga"};
    Status (*write)(Handle, Id, std::uint64_t) = Operation{"KHalRegisterWrite"};
    Status (*read)(Handle, Id, std::uint64_t*) = Operation{"KHalRegisterRead"};
    Status (*clear)(Handle, std::uint32_t queue) = Operation{"KHalDataQueueClear"};
    Status (*readQueue)(Handle, std::uint32_t queue, void*, std::uint32_t sizeBytes,
                        std::uint32_t timeoutMs) = Operation{"KHalDataQueueReadBufferLong"};
    Status (*lostWords)(Handle, std::uint32_t queue) = Operation{"KHalDataQueueGetNrOfLostWords"};
    Handle (*design)(std::uint8_t major, std::uint8_t minor) = Operation{"DovFirmwareTrampoline"};
    Id (*id)(Handle design, const char* name) = Operation{"DovGetRegisterByName"};
    Status (*unload)(Handle design) = Operation{"DovUnloadDovFile"};
};

inline const Operations& ops()
{
    static const Operations all;
    return all;
}

/// A device of a board, with the design of the given firmware.
class Device {
public:
    explicit Device(std::uint32_t board = 0, std::uint8_t minor = 0)
        : m_handle(ops().init(board))
        , m_design(ops().design(2, minor))
    {
        EXPECT_EQ(ops().configure(m_handle, m_design), 0);
    }
    ~Device()
    {
        ops().unload(m_design);
        ops().free(m_handle);
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    std::uint64_t handle() const { return m_handle; }
    std::uint32_t id(const std::string& name) const { return ops().id(m_design, name.c_str()); }
    std::int32_t write(const std::string& name, std::uint64_t value) const
    {
        return ops().write(m_handle, id(name), value);
    }
    std::uint64_t read(const std::string& name) const
    {
        std::uint64_t value = 0xDEAD;
        ops().read(m_handle, id(name), &value);
        return value;
    }

    void mdioWrite(std::uint8_t number, std::uint16_t value) const
    {
        write("GigE_MdioRegAddr", number);
        write("GigE_Mdio", value);
        write("GigE_MdioWR", 0);
    }
    std::uint64_t mdioRead(std::uint8_t number) const
    {
        write("GigE_MdioRegAddr", number);
        write("GigE_MdioRD", 0);
        return read("MdioReadReg");
    }

    void send(const Bytes& frame, int port = 0) const
    {
        const std::string number = std::to_string(port);
        const std::uint32_t data = id("GigeWriteData" + number);
        write("GigeBufferReset" + number, 0);
        for (std::size_t i = 0; i + 1 < frame.size(); i += 2)
            ops().write(m_handle, data, std::uint64_t(frame[i] | frame[i + 1] << 8) | 0xA5A50000);
        write("GigeWriteComplete" + number, 0);
    }
    /// The next transmission with its size word; empty after a time-out.
    Words receive(std::uint32_t port, std::uint32_t timeoutMs = 500) const
    {
        Words words(1);
        if (ops().readQueue(m_handle, port, words.data(), 4, timeoutMs) != 4)
            return {};
        words.resize(1 + words[0] / 2);
        const std::uint32_t bytes = words[0] * 2;
        EXPECT_EQ(ops().readQueue(m_handle, port, words.data() + 1, bytes, timeoutMs),
                  std::int32_t(bytes / 4 * 4));
        return words;
    }

private:
    std::uint64_t m_handle;
    std::uint64_t m_design;
};

inline Bytes frameOf(std::size_t size, unsigned first = 0)
{
    Bytes frame(size);
    for (std::size_t i = 0; i < size; ++i)
        frame[i] = std::uint8_t(first + i);
    return frame;
}

/// The words in which a frame comes, its bytes being `shown` and the announced size `announced`.
inline Words transmission(Bytes shown, std::uint32_t announced)
{
    Words words{announced};
    for (std::size_t i = 0; i + 1 < shown.size(); i += 2)
        words.push_back(std::uint32_t(shown[i] | shown[i + 1] << 8));
    words.back() |= 0x10000;
    return words;
}

template <typename Condition>
bool eventually(Condition condition)
{
    for (int i = 0; i < 2000 && !condition(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return condition();
}

inline KivoBoardPortCounters counters(const EmulatedBoard& board, std::uint32_t number, std::uint32_t port)
{
    KivoBoardPortCounters result{};
    EXPECT_EQ(board.control().counters(number, port, &result), 0);
    return result;
}

} // namespace mesk::tests
