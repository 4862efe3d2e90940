#pragma once

// Groups and keys of conf/config.ini. Irregular spellings are part of the
// file format and stay.

#include <QLatin1String>

namespace SettingsKeys {

namespace Common {
const QLatin1String group("Common");
const QLatin1String recvBackground("RecvBackground");
const QLatin1String recvTextColor("RecvTextColor");
const QLatin1String sendBackground("SendBackground");
const QLatin1String sendTextColor("SendTextColor");
const QLatin1String textCodec("TextCodec");
const QLatin1String skin("Skin");
const QLatin1String buffer("Buffer");
const QLatin1String recvFollowsSkin("RecvFollowsSkin"); // not written on first start
const QLatin1String sendFollowsSkin("SendFollowsSkin"); // nor this
} // namespace Common

namespace Serialport {
const QLatin1String group("Serialport");
const QLatin1String baudRate("BaudRate");
const QLatin1String dataBit("DataBit");
const QLatin1String stopBitsRead("SotpBit");    // first start and reading
const QLatin1String stopBitsWritten("StopBit"); // written when a port opens, never read
const QLatin1String parity("Parity");
} // namespace Serialport

namespace NetTools {
const QLatin1String group("NetTools");
const QLatin1String netType("NetType");
const QLatin1String ipAddr("IPAddr");
const QLatin1String port("Port");
} // namespace NetTools

namespace Camera { // not written on first start
const QLatin1String group("Camera");
const QLatin1String addressLength("AddrLength");
const QLatin1String valueLength("ValueLength");
// Of the link that was opened last.
const QLatin1String netType("NetType");
const QLatin1String localAddress("LocalAddr");
const QLatin1String serverAddress("ServerAddr");
const QLatin1String port("Port");
const QLatin1String destinationAddress("DestAddr");
const QLatin1String destinationPort("DestPort");
const QLatin1String serialPort("SerialPort");
const QLatin1String baudRate("BaudRate");
} // namespace Camera

namespace Pid { // not written on first start
const QLatin1String group("Pid");
const QLatin1String fitAll("FitAll");
} // namespace Pid

namespace LoRaTool {
const QLatin1String group("LoRaTool");
const QLatin1String updateUrl("UpdateUrl");
} // namespace LoRaTool

namespace HexEdit {
const QLatin1String group("HexEdit");
const QLatin1String recentFiles("RecentFiles"); // newest first; written when a file is opened
} // namespace HexEdit

namespace DAPCfg {
const QLatin1String group("DAPCfg");
const QLatin1String chip("Chip");
const QLatin1String port("Port");
const QLatin1String freq("Freq");
const QLatin1String mode("Mode");
const QLatin1String openUrl("OpenUrl");
const QLatin1String language("Language");
} // namespace DAPCfg

} // namespace SettingsKeys
