#include "stand-ins/board/FirmwareDesign.h"

namespace emulated_board {

FirmwareDesign FirmwareDesign::without(std::initializer_list<Register> lacking)
{
    FirmwareDesign design;
    for (const Register each : lacking)
        design.remove(each);
    return design;
}

DesignCatalogue builtInDesigns()
{
    using R = Register;
    return {
        {{2, 0}, FirmwareDesign()},
        {{2, 1}, FirmwareDesign::without({R::actionCmdConfigData})},
        {{2, 2},
         FirmwareDesign::without({R::recvPktCnt, R::recvErrCnt, R::ctrlPktReceivedCnt, R::ctrlPktSendUiqCnt,
                                  R::gvspFifoOverflow, R::gvcpFifoNotEmpty})},
        {{2, 3}, FirmwareDesign::without({R::txDisableCrcGeneration})},
        {{1, 0},
         FirmwareDesign::without({R::actionCmdConfigData, R::recvPktCnt, R::recvErrCnt, R::ctrlPktReceivedCnt,
                                  R::ctrlPktSendUiqCnt, R::gvspFifoOverflow, R::gvcpFifoNotEmpty,
                                  R::txDisableCrcGeneration, R::txTransferActive})},
    };
}

} // namespace emulated_board
