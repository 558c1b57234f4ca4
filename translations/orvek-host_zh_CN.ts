<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>CommandWatch</name>
    <message>
        <source>%1: confirmed by the device</source>
        <translation>%1：设备已确认</translation>
    </message>
    <message>
        <source>%1: no effect seen within %2 s</source>
        <translation>%1：%2 秒内未见效果</translation>
    </message>
</context>
<context>
    <name>ConsoleCommand</name>
    <message>
        <source>unknown command &quot;%1&quot; (try help)</source>
        <translation>未知命令“%1”（可输入 help）</translation>
    </message>
    <message>
        <source>too many arguments for %1</source>
        <translation>%1 的参数过多</translation>
    </message>
    <message>
        <source>%1 takes no argument</source>
        <translation>%1 不带参数</translation>
    </message>
    <message>
        <source>%1 needs a number, e.g. %1 60</source>
        <translation>%1 需要一个数字，例如 %1 60</translation>
    </message>
    <message>
        <source>%1 takes a number or nothing</source>
        <translation>%1 带一个数字或不带参数</translation>
    </message>
    <message>
        <source>%1 takes on, off or nothing</source>
        <translation>%1 带 on、off 或不带参数</translation>
    </message>
    <message>
        <source>no device is running</source>
        <translation>没有正在运行的设备</translation>
    </message>
    <message>
        <source>several devices: put the device name first, e.g. %1 %2</source>
        <translation>有多台设备：请先写设备名称，例如 %1 %2</translation>
    </message>
    <message>
        <source>Commands, optionally preceded by a device name (e.g. &quot;ups2 selftest&quot;):
  selftest          self-test
  discharge [N]     discharge test to low battery; with N: timed discharge N
  cancel            cancel the running test
  shutdown N        shut down, N as the device takes it
  standby N         standby, N as the device takes it (seconds)
  cancelshutdown    cancel a shutdown or standby
  buzzer [on|off]   buzzer switch
  time              set the device clock to now
  status            show the status block now
  help              this text
  quit              stop and exit</source>
        <translation>命令，前面可加设备名称（例如 &quot;ups2 selftest&quot;）：
  selftest          自检
  discharge [N]     放电测试至电池电压低；带 N：定时放电 N
  cancel            取消正在进行的测试
  shutdown N        关机，N 按设备的含义
  standby N         待机，N 按设备的含义（秒）
  cancelshutdown    取消关机或待机
  buzzer [on|off]   蜂鸣器开关
  time              将设备时钟设为当前时间
  status            立即显示状态块
  help              显示本帮助
  quit              停止并退出</translation>
    </message>
</context>
<context>
    <name>ConsoleMonitor</name>
    <message>
        <source>data stale</source>
        <translation>数据过期</translation>
    </message>
    <message>
        <source>communicating</source>
        <translation>通信中</translation>
    </message>
    <message>
        <source>lost</source>
        <translation>通信中断</translation>
    </message>
    <message>
        <source>connecting</source>
        <translation>连接中</translation>
    </message>
    <message>
        <source>error: %1</source>
        <translation>错误：%1</translation>
    </message>
    <message>
        <source>%1: request %2 &quot;%3&quot; sent</source>
        <translation>%1：请求 %2“%3”已发送</translation>
    </message>
    <message>
        <source>  ! %1</source>
        <translation>  ! %1</translation>
    </message>
    <message numerus="yes">
        <source>== %1  %n device(s), %2 communicating ==</source>
        <translation>
            <numerusform>== %1  %n 台设备，%2 台通信中 ==</numerusform>
        </translation>
    </message>
    <message>
        <source>no data yet</source>
        <translation>尚无数据</translation>
    </message>
    <message>
        <source>data %1</source>
        <translation>数据 %1</translation>
    </message>
    <message>
        <source>alarms: %1</source>
        <translation>告警：%1</translation>
    </message>
    <message>
        <source>none</source>
        <translation>无</translation>
    </message>
    <message>
        <source>in %1</source>
        <translation>输入 %1</translation>
    </message>
    <message>
        <source>out %1</source>
        <translation>输出 %1</translation>
    </message>
    <message>
        <source>load %1</source>
        <translation>负载 %1</translation>
    </message>
    <message>
        <source>battery %1</source>
        <translation>电池 %1</translation>
    </message>
    <message>
        <source>%1  %2  warning: %3</source>
        <translation>%1  %2  警告：%3</translation>
    </message>
    <message>
        <source>host</source>
        <translation>主机</translation>
    </message>
</context>
<context>
    <name>DeviceConfig</name>
    <message>
        <source>add a device with: orvek-host --add NAME HOST:PORT</source>
        <translation>添加设备：orvek-host --add NAME HOST:PORT</translation>
    </message>
    <message>
        <source>%1 does not exist yet; %2</source>
        <translation>%1 尚不存在；%2</translation>
    </message>
    <message>
        <source>%1 cannot be read: it is a folder, not a file; no device is started</source>
        <translation>无法读取 %1：它是文件夹而不是文件；未启动任何设备</translation>
    </message>
    <message>
        <source>%1 cannot be read (%2); no device is started</source>
        <translation>无法读取 %1（%2）；未启动任何设备</translation>
    </message>
    <message>
        <source>%1: line %2 holds a value with &apos;@&apos; or &apos;\&apos;, which no device setting uses and which could crash the reader; the file is not read and no device is started</source>
        <translation>%1：第 %2 行的值含有 &apos;@&apos; 或 &apos;\&apos;，没有任何设备设置使用这些字符，且可能使读取程序崩溃；未读取该文件，未启动任何设备</translation>
    </message>
    <message>
        <source>%1 cannot be read; no device is started</source>
        <translation>无法读取 %1；未启动任何设备</translation>
    </message>
    <message>
        <source>%1 is not entirely in INI format; what could be read is used</source>
        <translation>%1 不完全是 INI 格式；使用能读取的部分</translation>
    </message>
    <message>
        <source>%1: the group [%2] is no device and is skipped: a device needs ipAddr and port</source>
        <translation>%1：组 [%2] 不是设备，已跳过：设备需要 ipAddr 和 port</translation>
    </message>
    <message>
        <source>%1: the port &quot;%2&quot; of [%3] is no port number (1 to %4)</source>
        <translation>%1：[%3] 的端口“%2”不是端口号（1 到 %4）</translation>
    </message>
    <message>
        <source>%1 holds no usable device group; %2</source>
        <translation>%1 中没有可用的设备组；%2</translation>
    </message>
    <message numerus="yes">
        <source>%1: %n line(s) cannot be understood and are ignored (line(s) %2; the first reads &quot;%3&quot;)</source>
        <translation>
            <numerusform>%1：%n 行无法解析，已忽略（第 %2 行；第一行为“%3”）</numerusform>
        </translation>
    </message>
    <message>
        <source>%1: the group [%2] is written %3 times (lines %4); they are read as one device, the later values win</source>
        <translation>%1：组 [%2] 出现了 %3 次（第 %4 行）；按一台设备读取，以后出现的值为准</translation>
    </message>
    <message>
        <source>invalid device name &quot;%1&quot;</source>
        <translation>无效的设备名称“%1”</translation>
    </message>
    <message>
        <source>invalid address %1:%2</source>
        <translation>无效的地址 %1:%2</translation>
    </message>
    <message>
        <source>invalid plug-in class name &quot;%1&quot;</source>
        <translation>无效的插件类名“%1”</translation>
    </message>
    <message>
        <source>cannot create the folder of %1</source>
        <translation>无法创建 %1 所在的文件夹</translation>
    </message>
    <message>
        <source>%1 is not changed: line %2 holds a value with &apos;@&apos; or &apos;\&apos;; correct it first</source>
        <translation>%1 未修改：第 %2 行的值含有 &apos;@&apos; 或 &apos;\&apos;；请先更正</translation>
    </message>
    <message>
        <source>cannot write %1</source>
        <translation>无法写入 %1</translation>
    </message>
</context>
<context>
    <name>DeviceHost</name>
    <message>
        <source>not started: no device plug-in &quot;%1&quot; is loaded</source>
        <translation>未启动：未加载设备插件“%1”</translation>
    </message>
    <message>
        <source>not started a second time: a device of that name is already running</source>
        <translation>不再次启动：同名设备已在运行</translation>
    </message>
    <message>
        <source>not started: the plug-in made no client for it</source>
        <translation>未启动：插件没有为其创建客户端</translation>
    </message>
    <message>
        <source>the data logs of &quot;%1&quot; and &quot;%2&quot; would share one file name; &quot;%1&quot; writes %3</source>
        <translation>“%1”和“%2”的数据日志会使用同一个文件名；“%1”写入 %3</translation>
    </message>
    <message>
        <source>retries = %1: the connection attempt itself counts as one without an answer, so even a successful first connection is reported lost (and restored with the first answer); set retries to 2 or more</source>
        <translation>retries = %1：连接尝试本身即计为一次无应答，因此即使首次连接成功也会报告通信中断（收到第一个应答后恢复）；请将 retries 设为 2 或以上</translation>
    </message>
    <message>
        <source>Data stale: no answer decoded for %1 s</source>
        <translation>数据过期：%1 秒内未解析到应答</translation>
    </message>
    <message>
        <source>Data current again</source>
        <translation>数据已恢复更新</translation>
    </message>
</context>
<context>
    <name>DeviceSession</name>
    <message>
        <source>none yet</source>
        <translation>暂无</translation>
    </message>
    <message>
        <source>%1 s ago</source>
        <translation>%1 秒前</translation>
    </message>
    <message>
        <source>%1 min %2 s ago</source>
        <translation>%1 分 %2 秒前</translation>
    </message>
    <message>
        <source>%1 h %2 min ago</source>
        <translation>%1 小时 %2 分前</translation>
    </message>
    <message>
        <source>Alarm %1</source>
        <translation>告警 %1</translation>
    </message>
</context>
<context>
    <name>EventFormatter</name>
    <message>
        <source>Communication restored</source>
        <translation>通信恢复</translation>
    </message>
    <message>
        <source>Communication lost</source>
        <translation>通信中断</translation>
    </message>
    <message>
        <source>Alarm changed</source>
        <translation>告警变化</translation>
    </message>
    <message>
        <source>Alarm %1 raised</source>
        <translation>告警 %1 产生</translation>
    </message>
    <message>
        <source>Alarm %1 cleared</source>
        <translation>告警 %1 消除</translation>
    </message>
</context>
<context>
    <name>EventHook</name>
    <message>
        <source>event command: more than %1 events waiting; further events are not passed to it until it catches up</source>
        <translation>事件命令：等待中的事件超过 %1 个；在其处理完之前，后续事件不再传给它</translation>
    </message>
    <message>
        <source>event command killed after %1 s without ending</source>
        <translation>事件命令 %1 秒内未结束，已被终止</translation>
    </message>
    <message>
        <source>event command crashed</source>
        <translation>事件命令崩溃</translation>
    </message>
    <message>
        <source>event command ended with exit code %1</source>
        <translation>事件命令结束，退出码 %1</translation>
    </message>
    <message>
        <source>event command could not be started: %1</source>
        <translation>无法启动事件命令：%1</translation>
    </message>
    <message>
        <source>%1 (further failures are not told until it succeeds again)</source>
        <translation>%1（在再次成功之前，不再报告后续失败）</translation>
    </message>
</context>
<context>
    <name>HostOptions</name>
    <message>
        <source>Show this help.</source>
        <translation>显示本帮助。</translation>
    </message>
    <message>
        <source>Console monitor instead of the window (the default without a display).</source>
        <translation>使用控制台监视代替窗口（无显示器时的默认方式）。</translation>
    </message>
    <message>
        <source>Exit cleanly after S seconds.</source>
        <translation>S 秒后正常退出。</translation>
    </message>
    <message>
        <source>Save a picture of the window once every device has been read, then exit.</source>
        <translation>所有设备都读取过一次后保存窗口图片，然后退出。</translation>
    </message>
    <message>
        <source>Add or update the device NAME at HOST:PORT in dev.ini and exit (NAME followed by HOST:PORT; may be repeated).</source>
        <translation>在 dev.ini 中添加或更新位于 HOST:PORT 的设备 NAME 后退出（NAME 后跟 HOST:PORT；可重复）。</translation>
    </message>
    <message>
        <source>Polling interval (s) of added devices.</source>
        <translation>所添加设备的轮询间隔（秒）。</translation>
    </message>
    <message>
        <source>Failed connection attempts before an added device counts as lost.</source>
        <translation>所添加设备被视为通信中断前允许的连接失败次数。</translation>
    </message>
    <message>
        <source>Folder of the device plug-ins (default: the executable&apos;s folder).</source>
        <translation>设备插件所在文件夹（默认：可执行文件所在文件夹）。</translation>
    </message>
    <message>
        <source>Rights of the user: 0 viewer, 1 operator (default 1).</source>
        <translation>用户权限：0 查看者，1 操作员（默认 1）。</translation>
    </message>
    <message>
        <source>Serve the devices to NUT clients (upsc, upsmon, upscmd) at ADDR:PORT, e.g. 127.0.0.1:3493; users and rights in upsd.users beside dev.ini.</source>
        <translation>在 ADDR:PORT 向 NUT 客户端（upsc、upsmon、upscmd）提供设备，例如 127.0.0.1:3493；用户及权限见 dev.ini 旁的 upsd.users。</translation>
    </message>
    <message>
        <source>Serve Prometheus metrics at http://ADDR:PORT/metrics, e.g. 127.0.0.1:9184.</source>
        <translation>在 http://ADDR:PORT/metrics 提供 Prometheus 指标，例如 127.0.0.1:9184。</translation>
    </message>
    <message>
        <source>Monitors UPS devices through their device plug-ins.
Devices are the groups of KSVO/Quoranet/db/dev.ini beside the executable;
logs go to KSVO/Quoranet/db/logs. Stopping takes up to %1 s while a device
is in a connection attempt (5 s pause + 30 s connection wait).</source>
        <translation>通过设备插件监视 UPS 设备。
设备为可执行文件旁 KSVO/Quoranet/db/dev.ini 中的各个组；
日志写入 KSVO/Quoranet/db/logs。当有设备正在尝试连接时，
停止最多需要 %1 秒（5 秒暂停 + 30 秒连接等待）。</translation>
    </message>
    <message>
        <source>Address of each --add, in order.</source>
        <translation>每个 --add 的地址，按顺序给出。</translation>
    </message>
    <message>
        <source>--duration needs a number of seconds</source>
        <translation>--duration 需要一个秒数</translation>
    </message>
    <message>
        <source>--interval needs a number of seconds (1 or more)</source>
        <translation>--interval 需要一个秒数（1 或以上）</translation>
    </message>
    <message>
        <source>--retries needs a number (1 or more)</source>
        <translation>--retries 需要一个数字（1 或以上）</translation>
    </message>
    <message>
        <source>--user-level needs a number from 0 to %1</source>
        <translation>--user-level 需要 0 到 %1 之间的数字</translation>
    </message>
    <message>
        <source>--nut-listen needs an IP address and a port, e.g. 127.0.0.1:3493 or [::1]:3493</source>
        <translation>--nut-listen 需要 IP 地址和端口，例如 127.0.0.1:3493 或 [::1]:3493</translation>
    </message>
    <message>
        <source>--metrics-listen needs an IP address and a port, e.g. 127.0.0.1:9184 or [::1]:9184</source>
        <translation>--metrics-listen 需要 IP 地址和端口，例如 127.0.0.1:9184 或 [::1]:9184</translation>
    </message>
    <message>
        <source>unexpected argument %1</source>
        <translation>多余的参数 %1</translation>
    </message>
    <message>
        <source>every --add NAME needs its HOST:PORT</source>
        <translation>每个 --add NAME 都需要对应的 HOST:PORT</translation>
    </message>
    <message>
        <source>--add only writes dev.ini; run the host again without it</source>
        <translation>--add 只写入 dev.ini；请不带该选项再次运行主机程序</translation>
    </message>
    <message>
        <source>Language of the texts, e.g. zh_CN, or en for English (default: the locale, LANG).</source>
        <translation>文本的语言，例如 zh_CN，en 表示英文（默认：取自区域设置 LANG）。</translation>
    </message>
    <message>
        <source>Run the shell command CMD for every logged event, with ORVEK_DEVICE, ORVEK_EVENT, ORVEK_TEXT and ORVEK_TIME in its environment.</source>
        <translation>对每个记录的事件运行 shell 命令 CMD，其环境中带有 ORVEK_DEVICE、ORVEK_EVENT、ORVEK_TEXT 和 ORVEK_TIME。</translation>
    </message>
    <message>
        <source>--on-event needs a command</source>
        <translation>--on-event 需要一个命令</translation>
    </message>
</context>
<context>
    <name>LogWriter</name>
    <message numerus="yes">
        <source>The logs in %1 are written again; %n line(s) could not be written.</source>
        <translation>
            <numerusform>%1 中的日志已恢复写入；有 %n 行未能写入。</numerusform>
        </translation>
    </message>
    <message>
        <source>the folder cannot be created</source>
        <translation>无法创建该文件夹</translation>
    </message>
    <message>
        <source>Cannot write the log %1 (%2). Log lines are dropped until writing works again; retrying every %3 s.</source>
        <translation>无法写入日志 %1（%2）。在恢复写入之前日志行将被丢弃；每 %3 秒重试一次。</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>UPS Monitor</source>
        <translation>UPS 监控</translation>
    </message>
    <message>
        <source>Log in as:</source>
        <translation>登录身份：</translation>
    </message>
    <message>
        <source>Viewer</source>
        <translation>查看者</translation>
    </message>
    <message>
        <source>Operator</source>
        <translation>操作员</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>设备</translation>
    </message>
    <message>
        <source>State</source>
        <translation>状态</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>型号</translation>
    </message>
    <message>
        <source>Load</source>
        <translation>负载</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>地址</translation>
    </message>
    <message>
        <source>Last data</source>
        <translation>最近数据</translation>
    </message>
    <message>
        <source>No device selected.

Devices are added with: orvek-host --add NAME HOST:PORT</source>
        <translation>未选择设备。

添加设备：orvek-host --add NAME HOST:PORT</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>时间</translation>
    </message>
    <message>
        <source>Event</source>
        <translation>事件</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>文件(&amp;F)</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>退出(&amp;Q)</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>No events yet</source>
        <translation>暂无事件</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Active alarms:
%1</source>
        <translation>当前告警：
%1</translation>
    </message>
    <message>
        <source>Devices: %1</source>
        <translation>设备：%1</translation>
    </message>
    <message>
        <source>Communicating: %1</source>
        <translation>通信中：%1</translation>
    </message>
    <message>
        <source>Communication lost</source>
        <translation>通信中断</translation>
    </message>
    <message>
        <source>Data stale</source>
        <translation>数据过期</translation>
    </message>
    <message>
        <source>Alarm</source>
        <translation>告警</translation>
    </message>
    <message>
        <source>Communicating</source>
        <translation>通信中</translation>
    </message>
    <message>
        <source>Connecting</source>
        <translation>连接中</translation>
    </message>
    <message>
        <source>Last event: %1 %2 - %3</source>
        <translation>最近事件：%1 %2 - %3</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>主机</translation>
    </message>
    <message>
        <source>Stopping %1: a device in a connection attempt can take up to %2 s to stop...</source>
        <translation>正在停止 %1：正在尝试连接的设备最多需要 %2 秒才能停止...</translation>
    </message>
</context>
<context>
    <name>MetricsServer</name>
    <message>
        <source>the address cannot be bound</source>
        <translation>无法绑定该地址</translation>
    </message>
</context>
<context>
    <name>NutServer</name>
    <message>
        <source>no NUT users file %1: NUT clients may only read</source>
        <translation>没有 NUT 用户文件 %1：NUT 客户端只能读取</translation>
    </message>
    <message>
        <source>NUT users: %1</source>
        <translation>NUT 用户：%1</translation>
    </message>
</context>
<context>
    <name>OpenFileLimit</name>
    <message>
        <source>%1 devices are configured, but with at most %2 open files the host can serve only %3 of them; the others fail to connect. Raise the open-file limit (ulimit -n, LimitNOFILE) to %4 or more, or share the devices among several hosts</source>
        <translation>已配置 %1 台设备，但在最多 %2 个打开文件的限制下，主机只能服务其中 %3 台；其余设备将无法连接。请将打开文件数上限（ulimit -n、LimitNOFILE）提高到 %4 或以上，或将设备分配到多台主机</translation>
    </message>
</context>
<context>
    <name>PluginHost</name>
    <message>
        <source>it is not a shared library</source>
        <translation>它不是共享库</translation>
    </message>
    <message>
        <source>it is truncated</source>
        <translation>它不完整</translation>
    </message>
    <message>
        <source>it is damaged or truncated (its section table lies beyond the end of the file)</source>
        <translation>它已损坏或不完整（其节表位于文件末尾之后）</translation>
    </message>
    <message>
        <source>%1 is skipped: %2</source>
        <translation>已跳过 %1：%2</translation>
    </message>
    <message>
        <source>%1 is skipped: it is a Qt plug-in with the interface id &quot;%2&quot;, not a device plug-in (%3)</source>
        <translation>已跳过 %1：它是接口标识为“%2”的 Qt 插件，不是设备插件（%3）</translation>
    </message>
    <message>
        <source>%1 is skipped: the plug-in %2 is already loaded from %3</source>
        <translation>已跳过 %1：插件 %2 已从 %3 加载</translation>
    </message>
    <message>
        <source>%1 is skipped: it cannot be loaded as a device plug-in (%2)</source>
        <translation>已跳过 %1：无法作为设备插件加载（%2）</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>invalid HOST:PORT &quot;%1&quot;</source>
        <translation>无效的 HOST:PORT“%1”</translation>
    </message>
    <message>
        <source>%1 -&gt; %2:%3 in %4</source>
        <translation>%1 -&gt; %2:%3，位于 %4</translation>
    </message>
    <message>
        <source>warning: %1</source>
        <translation>警告：%1</translation>
    </message>
    <message>
        <source>warning: %1: %2</source>
        <translation>警告：%1：%2</translation>
    </message>
    <message>
        <source>no device plug-in (%1) found in %2</source>
        <translation>在 %2 中未找到设备插件（%1）</translation>
    </message>
    <message>
        <source>cannot serve NUT clients at %1:%2: %3</source>
        <translation>无法在 %1:%2 为 NUT 客户端提供服务：%3</translation>
    </message>
    <message>
        <source>cannot serve metrics at %1:%2: %3</source>
        <translation>无法在 %1:%2 提供指标：%3</translation>
    </message>
    <message>
        <source>%1 device(s); type help for commands</source>
        <translation>%1 台设备；输入 help 查看命令</translation>
    </message>
    <message>
        <source>saved %1</source>
        <translation>已保存 %1</translation>
    </message>
    <message>
        <source>cannot save %1</source>
        <translation>无法保存 %1</translation>
    </message>
    <message>
        <source>stopping %1 device(s); a device in a connection attempt can take up to %2 s</source>
        <translation>正在停止 %1 台设备；正在尝试连接的设备最多需要 %2 秒</translation>
    </message>
</context>
</TS>
