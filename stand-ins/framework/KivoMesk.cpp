#include <kivo/core/FrameworkJournal.h>
#include <kivo/core/mesk/Mesk.h>

void KivoMeskInit()
{
    kivo::core::noteFrameworkCall("KivoMeskInit");
}

void KivoMeskDeinit()
{
    kivo::core::noteFrameworkCall("KivoMeskDeinit");
}
