#pragma once

// Groups and keys of conf/config.ini. Irregular spellings are part of the
// file format and stay.

#include <QLatin1String>

namespace SettingsKeys {

namespace Common {
constexpr QLatin1String group("Common");
constexpr QLatin1String recvBackground("RecvBackground");
constexpr QLatin1String recvTextColor("RecvTextColor");
constexpr QLatin1String sendBackground("SendBackground");
constexpr QLatin1String sendTextColor("SendTextColor");
constexpr QLatin1String textCodec("TextCodec");
constexpr QLatin1String skin("Skin");
constexpr QLatin1String buffer("Buffer");
} // namespace Common

namespace Serialport {
constexpr QLatin1String group("Serialport");
constexpr QLatin1String baudRate("BaudRate");
constexpr QLatin1String dataBit("DataBit");
constexpr QLatin1String stopBitsRead("SotpBit");   // first start and reading
constexpr QLatin1String stopBitsWritten("StopBit"); // written when a port opens, never read
constexpr QLatin1String parity("Parity");
} // namespace Serialport

namespace NetTools {
constexpr QLatin1String group("NetTools");
constexpr QLatin1String netType("NetType");
constexpr QLatin1String ipAddr("IPAddr");
constexpr QLatin1String port("Port");
} // namespace NetTools

namespace LoRaTool {
constexpr QLatin1String group("LoRaTool");
constexpr QLatin1String updateUrl("UpdateUrl");
} // namespace LoRaTool

namespace DAPCfg {
constexpr QLatin1String group("DAPCfg");
constexpr QLatin1String chip("Chip");
constexpr QLatin1String port("Port");
constexpr QLatin1String freq("Freq");
constexpr QLatin1String mode("Mode");
constexpr QLatin1String openUrl("OpenUrl");
constexpr QLatin1String language("Language");
} // namespace DAPCfg

} // namespace SettingsKeys
