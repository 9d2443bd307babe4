#include "support/config/TweakProperties.h"

#include "plugin/binding/InstallRoot.h"
#include "support/platform/RecursiveMutexGuard.h"
#include "support/platform/os/Environment.h"
#include "support/platform/os/File.h"
#include "support/platform/os/Module.h"

#include <algorithm>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace kivo::templates::platform {

// clang-format off
const TweakPropertyRow TweakPropertyTable[] = {
    {"Global::EnablePCAP", "KIVO_ENABLE_PCAP", "pcap", "Off"},
    {"Global::PCAPFileSizeLimit", "KIVO_PCAP_FILESIZELIMIT", "pcaplimit", "0"},
    {"Global::EnableReconfig", "KIVO_ENABLE_RECONFIGURATION", "", "On"},
    {"Global::OverrideQtLibraryPaths", "KIVO_OVERRIDE_QT_LIBRARYPATHS", "", "On"},
    {"Global::GuiConsoleFont", "KIVO_GUI_CONSOLE_FONT", "", "consolas"},
    {"Global::GuiConsoleFontSize", "KIVO_GUI_CONSOLE_FONT_SIZE", "", "0"},
    {"Global::GsReconfigurationTimeout", "KIVO_GS_RECONFIGURATION_TIMEOUT", "", "7500"},
    {"Global::CheckForUpdates", "KIVO_CHECK_FOR_UPDATES", "", "On"},
    {"Global::ShowUpdateMessageOnStartup", "KIVO_SHOW_UPDATE_MESSAGE", "", "On"},
    {"FG::EnableNUMASupport", "KIVO_ENABLE_NUMA_SUPPORT", "", "Off"},
    {"FG::UnloadFPGAOnFree", "KIVO_UNLOAD_ON_FREE", "", "Off"},
    {"FG::EnableLogging", "KIVO_ENABLE_LOGGING", "", "Off"},
    {"FG::LoadParametersNumRetries", "", "", "3"},
    {"FG::bE9EnableTurboDma", "KIVO_BE9_ENABLE_TURBO_DMA", "", "Off"},
    {"GIGE::StreamChannelUdpDestinationPort", "KIVO_GIGE_STREAMCHANNEL_UDP_DESTINATION_PORT", "", "0"},
    {"GIGE::ServiceUdpSourcePort", "KIVO_GIGE_SERVICE_UDP_SOURCE_PORT", "", "0"},
    {"GIGE::CableDiagnosticTimeout", "KIVO_GIGE_CABLEDIAGNOSTIC_TIMEOUT", "", "4000"},
    {"GIGE::DriverClassPortMask", "KIVO_GIGE_DRIVER_CLASS_PORT_MASK", "", "0"},
    {"TVQ::SyncMonitorInitialWaitInMs", "KIVO_TVQ_SYNC_MONITOR_INITIAL_WAIT_IN_MS", "", "2000"},
    {"CXP::CommandAckTimeout", "KIVO_CXP_COMMAND_ACK_TIMEOUT", "", "200"},
    {"CXP::WaitAfterLinkReset", "KIVO_CXP_WAIT_AFTER_LINKRESET", "", "300"},
    {"CXP::WaitAfterCameraConfigDone", "KIVO_CXP_WAIT_AFTER_CAMERACONFIG_DONE", "", "750"},
    {"CXP::WaitAfterLinkResetAtDiscovery", "KIVO_CXP_WAIT_AFTER_LINKRESET_AT_DISCOVERY", "", "200"},
    {"CXP::WaitAfterLinkResetOfAllPorts", "KIVO_CXP_WAIT_AFTER_LINKRESET_OF_ALL_PORTS", "", "0"},
    {"CXP::WaitAfterPowerup", "KIVO_CXP_WAIT_AFTER_POWERUP", "", "2000"},
    {"CXP::WaitAfterPowerdown", "KIVO_CXP_WAIT_AFTER_POWERDOWN", "", "0"},
    {"CXP::ReceiveAckPacketOnLinkConfig", "KIVO_CXP_RECEIVE_ACK_PACKET_ON_LINKCONFIG", "", "Off"},
    {"CXP::SkipRegisterCheckOnLinkConfig", "KIVO_CXP_SKIP_REGISTER_CHECK_ON_LINKCONFIG", "", "Off"},
    {"CXP::ErrorsPerMillisecondBeforeDesync", "KIVO_CXP_ERRORS_PER_MS_BEFORE_DESYNC", "", "100"},
    {"CXP::DisablePowerOverCxp", "KIVO_CXP_DISABLE_POWER_OVER_CXP", "disablePoCXP", "Off"},
    {"CXP::InitialPowercycle", "KIVO_CXP_INIT_POWERCYCLE", "cxppower", "On"},
    {"AuxPort::LockPorts", "KIVO_AUXPORT_LOCK_PORTS", "", "On"},
    {"AuxPort::EnableJtagMsbBugfix", "KIVO_AUXPORT_ENABLE_JTAG_BUGFIX", "", "On"},
    {"HW::Logging", "KIVO_HW_LOGGING", "", "0"},
    {"HW::EnableSpiCache", "KIVO_ENABLE_SPICACHE", "", "On"},
    {"HW::ReportExtendedBoardType", "KIVO_REPORT_EXTENDED_BOARDTYPE", "", "On"},
    {"DOVRT::RemoveTempDir", "KIVO_REMOVE_TEMP_DOV_DIR", "", "On"},
    {"Nanoview::CxpPowerThreshold", "KIVO_NANOVIEW_CXP_POWER_THRESHOLD", "", "100"},
    {"Nanoprobe::LogDir", "KIVO_NANOPROBE_LOGDIR", "", ""},
    {"Internal::EnableDRA", "KIVO_ENABLE_DRA", "", "Off"},
    {"Internal::EnableDVAA", "KIVO_ENABLE_DVAA", "", "Off"},
    {"Internal::LogRecursive", "KIVO_LOG_RECURSIVE", "", "Off"},
    {"Internal::LogAppletMessages", "KIVO_LOG_APPLET_MESSAGES", "", "Off"},
    {"Internal::EnableSafetyPartitionAccess", "KIVO_ENABLE_SAFETY_PARTITION_ACCESS", "", "Off"},
    {"Internal::ForceExternalRuntimeModules", "KIVO_FORCE_EXTERNAL_RUNTIMEMODULES", "", "Off"},
    {"Internal::CXPPowercycleTestRuns", "", "", "1"},
    {"Internal::CXPPowercycleTestDelay", "", "", "20"},
    {"Internal::CXPNummberofFrameGrabble", "", "", "10"},
    {"Internal::CXPNoOftimesResetPort", "", "", "1"},
    {"Internal::NumberofTestPacketstoSend", "", "", "10000"},
    {"Internal::NumberofTimestoRun", "", "", "10"},
    {"Internal::ArduinoPort", "KIVO_HWTEST_TRIGGERGENERATOR_PORT", "", "COM4"},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

namespace {

const std::ctype<char>& characters(const std::locale& locale)
{
    return std::use_facet<std::ctype<char>>(locale);
}

std::string upperCase(std::string_view text)
{
    const std::locale locale;
    std::string upper(text);
    characters(locale).toupper(upper.data(), upper.data() + upper.size());
    return upper;
}

std::string_view trimmed(std::string_view text)
{
    const std::locale locale;
    const auto isSpace = [&kinds = characters(locale)](char c) {
        return kinds.is(std::ctype_base::space, c);
    };
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

template <typename T>
std::optional<T> converted(const std::string& text)
{
    std::istringstream stream(text);
    T value{};
    stream >> value;
    if (stream.fail())
        return std::nullopt;
    return value;
}

/// The value of `word` in one argument of the form `--word=value`, with any number of dashes.
std::optional<std::string> argumentValue(const char* argument, const std::string& upperWord)
{
    std::string_view text(argument != nullptr ? argument : "");
    text.remove_prefix(std::min(text.find_first_not_of('-'), text.size()));
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || upperCase(text.substr(0, equals)) != upperWord)
        return std::nullopt;
    return std::string(text.substr(equals + 1));
}

/// The last argument that names the word and whose value converts.
template <typename T>
std::optional<T> commandLineValue(const char* word, std::int32_t argc, const char* const* argv)
{
    if (*word == '\0' || argc < 1 || argv == nullptr)
        return std::nullopt;
    const std::string upperWord = upperCase(word);
    for (std::int32_t index = argc - 1; index >= 0; --index) {
        const std::optional<std::string> text = argumentValue(argv[index], upperWord);
        const std::optional<T> value = text ? converted<T>(*text) : std::nullopt;
        if (value)
            return value;
    }
    return std::nullopt;
}

/// Reads the lines of one settings file into a map.
class LineReader {
public:
    LineReader(std::map<std::string, std::string>& entries, bool useSections, bool caseSensitive,
               bool overwrite)
        : m_entries(entries)
        , m_useSections(useSections)
        , m_caseSensitive(caseSensitive)
        , m_overwrite(overwrite)
    {
    }

    void read(std::string_view line)
    {
        line = trimmed(line.substr(0, line.find('#')));
        if (line.empty() || (m_useSections && (takesHeader(line) || m_section.empty())))
            return;
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos)
            enter(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
    }

private:
    /// @returns whether nothing is left to do with the line.
    bool takesHeader(std::string_view line)
    {
        if (line.front() != '[')
            return false;
        if (line.size() < 3)
            return true;
        if (line.back() != ']')
            return false;
        m_section = normalised(std::string(trimmed(line.substr(1, line.size() - 2))));
        return true;
    }

    void enter(std::string_view key, std::string_view value)
    {
        std::string fullKey = m_useSections ? m_section + "::" : std::string();
        fullKey = normalised(fullKey.append(key));
        if (m_overwrite)
            m_entries.insert_or_assign(std::move(fullKey), std::string(value));
        else
            m_entries.try_emplace(std::move(fullKey), value);
    }

    std::string normalised(const std::string& text) const { return m_caseSensitive ? text : upperCase(text); }

    std::map<std::string, std::string>& m_entries;
    const bool m_useSections;
    const bool m_caseSensitive;
    const bool m_overwrite;
    std::string m_section;
};

constexpr const char* settingsFile = "rt.conf";

std::string systemSettingsPath()
{
    const char* const root = plugin::findInstallRoot();
    return root != nullptr ? std::string(root) + os::pathSeparator + settingsFile : std::string();
}

std::string userSettingsPath()
{
    const std::optional<std::string> data = os::environmentVariable("APPDATA");
    if (!data || data->empty())
        return {};
    const std::string directory = *data + os::pathSeparator + "kivo";
    return os::createDirectory(directory) ? directory + os::pathSeparator + settingsFile : std::string();
}

} // namespace

ConfigFile::ConfigFile(bool sections, bool exactCase)
    : m_useSections(sections)
    , m_caseSensitive(exactCase)
{
}

bool ConfigFile::load(const std::string& path, bool keepEntries, bool overwrite)
{
    const RecursiveMutexGuard guard(&m_mutex);
    std::string text;
    if (!os::readTextFile(path, text))
        return false;
    if (!keepEntries)
        m_entries.clear();
    LineReader reader(m_entries, m_useSections, m_caseSensitive, overwrite);
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        reader.read(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return true;
}

const std::string& ConfigFile::value(const std::string& key, bool* found) const
{
    const RecursiveMutexGuard guard(&m_mutex);
    const auto entry = m_entries.find(m_caseSensitive ? key : upperCase(key));
    if (found != nullptr)
        *found = entry != m_entries.end();
    return entry != m_entries.end() ? entry->second : m_emptyValue;
}

TweakProperties::~TweakProperties() = default;

const TweakPropertyRow& TweakProperties::row(const TweakPropertyRow* table, const std::string& name)
{
    const RecursiveMutexGuard guard(&m_rowIndexMutex);
    if (!m_rowsIndexed) {
        for (const TweakPropertyRow* each = table; each->key != nullptr; ++each)
            m_rowIndex[each->key] = each;
        m_rowsIndexed = true;
    }
    const auto found = m_rowIndex.find(name);
    if (found == m_rowIndex.end())
        throw std::runtime_error("TweakProperties: Unknown property requested: '" + name + "'");
    return *found->second;
}

const std::string& TweakProperties::fileValue(LoadedOnce& source, const std::string& path,
                                              const std::string& name)
{
    const RecursiveMutexGuard guard(&source.mutex);
    if (!source.loaded) {
        source.file.load(path, true, true);
        source.loaded = true;
    }
    return source.file.value(name);
}

template <typename T>
T TweakProperties::getProperty(const TweakPropertyRow* table, const std::string& userFilePath,
                               const std::string& systemFilePath, const std::string& name, std::int32_t argc,
                               const char* const* argv)
{
    const TweakPropertyRow& found = row(table, name);
    std::optional<T> value = commandLineValue<T>(found.commandLineWord, argc, argv);
    // No text of a source converts where it is empty, so a missing one needs no test of its own.
    if (!value && !userFilePath.empty())
        value = converted<T>(fileValue(m_user, userFilePath, name));
    if (!value && !systemFilePath.empty())
        value = converted<T>(fileValue(m_system, systemFilePath, name));
    if (!value && *found.environmentVariable != '\0')
        value = converted<T>(os::environmentVariable(found.environmentVariable).value_or(""));
    if (!value)
        value = converted<T>(found.defaultValue);
    if (!value)
        throw std::runtime_error("TweakProperties: No valid value found for property '" + name + "'");
    return *value;
}

template std::int32_t TweakProperties::getProperty<std::int32_t>(const TweakPropertyRow*, const std::string&,
                                                                 const std::string&, const std::string&,
                                                                 std::int32_t, const char* const*);

template <typename T>
T readTweakProperty(const std::string& name, std::int32_t argc, const char* const* argv)
{
    TweakProperties store;
    const std::string systemFile = systemSettingsPath();
    const std::string userFile = userSettingsPath();
    return store.getProperty<T>(TweakPropertyTable, userFile, systemFile, name, argc, argv);
}

template std::int32_t readTweakProperty<std::int32_t>(const std::string&, std::int32_t, const char* const*);

} // namespace kivo::templates::platform
