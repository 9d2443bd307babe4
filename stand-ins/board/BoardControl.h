#pragma once

#include <stddef.h>
#include <stdint.h>

/// Control interface of the emulated board: what a test or the host program uses to set the board up,
/// to disturb it and to see what was done to it. Exported beside the board operations: look
/// `KivoBoardControlTable` up in `kivo_hal`.
///
/// All functions may be called on any thread at any time. Statuses are 0 for success and negative
/// otherwise; a negative status leaves everything as it was. Texts that go out are copied into the
/// caller's buffer, zero-terminated and cut to its size; the result is the whole text's length.

#define KIVO_BOARD_CONTROL_VERSION 2u

#ifdef __cplusplus
extern "C" {
#endif

/// One entry of the journal: a call of a board operation, or a note.
struct KivoBoardCall {
    char operation[40];    ///< the operation's name; "note" for a note
    char text[120];        ///< key or register name that was given, the name of the register behind a
                           ///< register id, or the note's text; else empty
    uint64_t arguments[4]; ///< the numbers that were given, in their order, without the text
    int64_t result;        ///< what the operation answered (a text: 1 there, 0 null)
    uint64_t value;        ///< the value that a register read gave; the first word that a queue read gave
    uint32_t threadId;     ///< the kernel's id of the calling thread
};

/// What one port has counted since power-on.
struct KivoBoardPortCounters {
    uint64_t framesSent;      ///< frames that left through the transmitter
    uint64_t bytesSent;       ///< their bytes, without frame check sequence
    uint64_t framesReceived;  ///< frames put into the receive queue
    uint64_t bytesReceived;   ///< their bytes, without frame check sequence
    uint64_t framesDropped;   ///< frames that found the receive queue full, or the port's receiver off
    uint64_t crcErrors;       ///< frames whose check sequence was wrong, not delivered
    uint64_t lostWords;       ///< words that the receive queue lost
    uint64_t framesUnsent;    ///< frames written while the transmitter was off or the line full, or too long
    uint64_t refusedAtFarEnd; ///< frames sent to a link without a port that refused their check sequence
};

/// What the link of one port has counted since it was plugged, and whether it is still there.
struct KivoBoardLinkCounters {
    uint64_t framesOut;     ///< frames of the port that reached the far end
    uint64_t bytesOut;      ///< their bytes, without frame check sequence
    uint64_t framesIn;      ///< frames of the far end that were handed to the port
    uint64_t bytesIn;       ///< their bytes, without frame check sequence
    uint64_t framesRefused; ///< frames, either way, that the other side doesn't take: too long or too short
                            ///< for it, or with a wrong check sequence; all that a gone link was given
    uint64_t framesLost;    ///< frames, either way, that found no room
    uint64_t errors;        ///< other failures of what the link is made of, a network interface that is down
    int32_t isUp;           ///< 0 for a link that went away: then the port goes on as with none
    char reason[120];       ///< why it went away; empty as long as it is there
};

/// What is held of the board at this moment.
struct KivoBoardHeld {
    uint32_t devices; ///< handles of KHalInitDevice and KHalGetDevice not given back
    uint32_t designs; ///< designs of DovFirmwareTrampoline not unloaded
};

struct KivoBoardControl {
    uint32_t version; ///< KIVO_BOARD_CONTROL_VERSION
    uint32_t size;    ///< size of this record in bytes

    /// Takes the set-up from an INI file (null: the built-in default) and switches the boards off and
    /// on: links are plugged anew, handles die, queues, counters, scripts and the journal are emptied.
    int32_t (*loadSetup)(const char* path);

    uint32_t (*boardCount)(void);
    uint32_t (*portCount)(uint32_t board);

    /// Plugs a port: "none", "camera", "camera:OPTIONS", "interface:NAME", "tap:NAME", "pair:BOARD.PORT",
    /// "file:IN.pcap,OUT.pcap" (either name may be empty).
    /// A pair is plugged at both ends. On a negative status `error` holds the reason in words.
    int32_t (*plug)(uint32_t board, uint32_t port, const char* link, char* error, size_t errorSize);
    size_t (*link)(uint32_t board, uint32_t port, char* text, size_t size);
    /// Whether a port's link has no more to deliver of its own: a file that is replayed to its end, and
    /// nothing in flight to the port. 1 or 0, negative for no such port.
    int32_t (*linkIdle)(uint32_t board, uint32_t port);

    /// From now on, the calls `first` to `first` + `count` - 1 of `operation` (1 is the next one; a
    /// count of 0 is for ever) do nothing and answer `result`. The operation "*" counts every call of
    /// every operation.
    /// `natural` not 0: `result` is not used, and the operation answers its own kind of failure: 0 for a
    /// handle, a count, an id or an integer, null for a text, -1 for a status.
    int32_t (*script)(const char* operation, uint64_t first, uint64_t count, int32_t natural, int64_t result);
    void (*clearScripts)(void);
    /// How many calls scripts have answered since they were cleared.
    uint64_t (*scriptedCalls)(void);

    /// Puts words into a queue of a board (receive queue: port, action timeouts: port + 8), as the
    /// firmware would. Gives the number of words that went in; the others are counted as lost.
    uint32_t (*injectWords)(uint32_t board, uint32_t queue, const uint32_t* words, uint32_t count);
    /// Words in a queue at the moment.
    uint32_t (*queuedWords)(uint32_t board, uint32_t queue);
    /// Sets the count of lost words that KHalDataQueueGetNrOfLostWords gives.
    void (*setLostWords)(uint32_t board, uint32_t queue, int32_t count);

    /// While `value` is not 0, GigeTxTransferActive of the port reads `value`.
    int32_t (*freezeTransmitter)(uint32_t board, uint32_t port, uint64_t value);

    /// Holds a PHY in reset: bit 15 of its register 0 stays set until it is let go.
    int32_t (*holdPhy)(uint32_t board, uint32_t phy, int32_t hold);
    /// How many reads of register 0 show the reset bit after a reset.
    int32_t (*setPhyResetReads)(uint32_t board, uint32_t phy, uint32_t reads);
    /// A PHY's register, or (through 29 and 30) an indirect register.
    uint16_t (*phyRegister)(uint32_t board, uint32_t phy, uint32_t number);
    uint16_t (*phyIndirect)(uint32_t board, uint32_t phy, uint32_t selector);
    void (*setPhyRegister)(uint32_t board, uint32_t phy, uint32_t number, uint16_t value);

    /// What a firmware register holds, by its whole name (with the port number); negative if no design
    /// of this emulation has it. Writing sets what a read gives, without the register's effect.
    int32_t (*registerValue)(uint32_t board, const char* name, uint64_t* value);
    int32_t (*setRegisterValue)(uint32_t board, const char* name, uint64_t value);

    /// What KHalGetBoardInfoInt and KHalGetBoardInfoString answer for a key. A null text is answered as
    /// null.
    int32_t (*setInfoInt)(uint32_t board, const char* key, int32_t value);
    int32_t (*setInfoString)(uint32_t board, const char* key, const char* value);

    int32_t (*counters)(uint32_t board, uint32_t port, struct KivoBoardPortCounters* counters);
    void (*held)(struct KivoBoardHeld* held);

    /// The journal keeps the newest calls, up to its capacity; 0 (the start) switches it off.
    void (*setJournalCapacity)(size_t calls);
    void (*clearJournal)(void);
    /// Calls in the journal at the moment, and how many older ones were dropped for space.
    size_t (*journalSize)(void);
    uint64_t (*journalDropped)(void);
    /// Copies an entry, 0 being the oldest. Negative if there is none.
    int32_t (*journalEntry)(size_t index, struct KivoBoardCall* call);
    /// Adds an entry of the caller's own, so that things beside the board stand in its order.
    void (*note)(const char* text);

    /// An action command of the port timed out: puts the firmware's report with this count into the
    /// port's action-timeout queue. Negative for firmware without action commands.
    int32_t (*actionTimeout)(uint32_t board, uint32_t port, uint16_t count);

    /// All 0 and up for a port that is plugged to nothing.
    int32_t (*linkCounters)(uint32_t board, uint32_t port, struct KivoBoardLinkCounters* counters);
};

/// The control interface; null if this board has no interface of that version.
// NOLINTNEXTLINE(modernize-use-using): C reads this, too
typedef const struct KivoBoardControl* (*KivoBoardControlFunction)(uint32_t version);

#ifdef __cplusplus
}
#endif
