<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- What Qt's own Chinese catalogue of qtbase lacks or calls by an unusual word, and QtSerialPort,
     which has none.
     tools/make_translation.sh joins this with it. -->
<TS version="2.1" language="zh_CN">
<context>
    <name>QSerialPort</name>
    <message>
        <source>No error</source>
        <translation>没有错误</translation>
    </message>
    <message>
        <source>Device is already open</source>
        <translation>设备已经打开</translation>
    </message>
    <message>
        <source>Device is not open</source>
        <translation>设备没有打开</translation>
    </message>
    <message>
        <source>Operation timed out</source>
        <translation>操作超时</translation>
    </message>
    <message>
        <source>Error reading from device</source>
        <translation>读取设备时出错</translation>
    </message>
    <message>
        <source>Error writing to device</source>
        <translation>写入设备时出错</translation>
    </message>
    <message>
        <source>Device disappeared from the system</source>
        <translation>设备已从系统中消失</translation>
    </message>
    <message>
        <source>Unsupported open mode</source>
        <translation>不支持的打开方式</translation>
    </message>
    <message>
        <source>Permission error while creating lock file</source>
        <translation>没有创建锁文件的权限</translation>
    </message>
    <message>
        <source>Permission error while locking the device</source>
        <translation>没有锁定设备的权限</translation>
    </message>
    <message>
        <source>The device supports only the ignoring policy</source>
        <translation>设备只支持忽略错误的策略</translation>
    </message>
    <message>
        <source>Invalid baud rate value</source>
        <translation>无效的波特率</translation>
    </message>
    <message>
        <source>Custom baud rate is not supported</source>
        <translation>不支持自定义波特率</translation>
    </message>
    <message>
        <source>Custom baud rate direction is unsupported</source>
        <translation>不支持按方向自定义波特率</translation>
    </message>
    <message>
        <source>Cannot set custom speed for one direction</source>
        <translation>无法为单个方向设置自定义速率</translation>
    </message>
    <message>
        <source>No suitable custom baud rate divisor</source>
        <translation>没有合适的自定义波特率分频值</translation>
    </message>
</context>
<context>
    <name>QFileSystemModel</name>
    <message>
        <source>%1 TB</source>
        <translation>%1 TB</translation>
    </message>
    <message>
        <source>%1 GB</source>
        <translation>%1 GB</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>%1 KB</source>
        <translation>%1 KB</translation>
    </message>
    <message>
        <source>%1 bytes</source>
        <translation>%1 字节</translation>
    </message>
    <message>
        <source>%1 byte(s)</source>
        <translation>%1 字节</translation>
    </message>
    <message>
        <source>&lt;b&gt;The name "%1" can not be used.&lt;/b&gt;&lt;p&gt;Try using another name, with fewer characters or no punctuations marks.</source>
        <translation>&lt;b&gt;名称“%1”不可使用。&lt;/b&gt;&lt;p&gt;请换一个较短或不含标点符号的名称。</translation>
    </message>
</context>
<context>
    <name>QFile</name>
    <message>
        <source>Cannot open for output</source>
        <translation>无法打开进行输出</translation>
    </message>
    <message>
        <source>Error while renaming.</source>
        <translation>重命名时出错。</translation>
    </message>
</context>
<context>
    <name>QFontDatabase</name>
    <message>
        <source>Normal</source>
        <comment>The Normal or Regular font weight</comment>
        <translation>常规</translation>
    </message>
</context>
<context>
    <name>QMessageBox</name>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>帮助</translation>
    </message>
</context>
<context>
    <name>QHostInfoAgent</name>
    <message>
        <source>Unknown error</source>
        <translation>未知错误</translation>
    </message>
    <message>
        <source>Unknown error (%1)</source>
        <translation>未知错误（%1）</translation>
    </message>
</context>
<context>
    <name>QNetworkAccessManager</name>
    <message>
        <source>Network access is disabled.</source>
        <translation>网络访问已被禁用。</translation>
    </message>
</context>
<context>
    <name>QNetworkReply</name>
    <message>
        <source>Error downloading %1 - server replied: %2</source>
        <translation>下载 %1 时出错 - 服务器已回复：%2</translation>
    </message>
</context>
<context>
    <name>QProcess</name>
    <message>
        <source>Process failed to start (spawned process exited with code 127)</source>
        <translation>进程启动失败（子进程以代码 127 退出）</translation>
    </message>
</context>
<context>
    <name>QCommandLineParser</name>
    <message>
        <source>Displays this help.</source>
        <translation>显示此帮助。</translation>
    </message>
</context>
<context>
    <name>QSslSocket</name>
    <message>
        <source>Handshake failed: %1</source>
        <translation>握手失败：%1</translation>
    </message>
    <message>
        <source>Internal error</source>
        <translation>内部错误</translation>
    </message>
    <message>
        <source>Insufficient memory</source>
        <translation>内存不足</translation>
    </message>
    <message>
        <source>Access denied</source>
        <translation>拒绝访问</translation>
    </message>
    <message>
        <source>Unknown error occurred: %1</source>
        <translation>发生未知错误：%1</translation>
    </message>
    <message>
        <source>The target is unknown or unreachable</source>
        <translation>目标未知或无法访问</translation>
    </message>
    <message>
        <source>No common protocol exists between the client and the server</source>
        <translation>客户端与服务器没有共同的协议</translation>
    </message>
    <message>
        <source>No cipher suites in common</source>
        <translation>没有共同的加密套件</translation>
    </message>
    <message>
        <source>Algorithm mismatch</source>
        <translation>算法不匹配</translation>
    </message>
    <message>
        <source>No certificate verification store, cannot verify OCSP response</source>
        <translation>没有证书验证库，无法验证 OCSP 应答</translation>
    </message>
    <message>
        <source>The hostname provided does not match the one received from the peer</source>
        <translation>所给主机名与对方的不一致</translation>
    </message>
    <message>
        <source>Server did not accept any certificate we could present.</source>
        <translation>服务器不接受我们能提供的任何证书。</translation>
    </message>
    <message>
        <source>The message was tampered with, damaged or out of sequence.</source>
        <translation>消息被篡改、损坏或次序有误。</translation>
    </message>
    <message>
        <source>A message was received out of sequence.</source>
        <translation>收到次序有误的消息。</translation>
    </message>
    <message>
        <source>Unexpected or badly-formatted message received</source>
        <translation>收到意外的或格式有误的消息</translation>
    </message>
</context>
<context>
    <name>QFileSystemModel</name>
    <message>
        <source>Size</source>
        <translation>大小</translation>
    </message>
</context>
<context>
    <name>QDirModel</name>
    <message>
        <source>Size</source>
        <translation>大小</translation>
    </message>
</context>
<context>
    <name>QLineEdit</name>
    <message>
        <source>&amp;Undo</source>
        <translation>撤销(&amp;U)</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>恢复撤销(&amp;R)</translation>
    </message>
</context>
<context>
    <name>QWidgetTextControl</name>
    <message>
        <source>&amp;Undo</source>
        <translation>撤销(&amp;U)</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>恢复撤销(&amp;R)</translation>
    </message>
</context>
</TS>
