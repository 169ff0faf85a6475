#pragma once

#include <QString>

/// A message in the two languages of the window, UTF-8.
struct Text
{
    const char *english;
    const char *chinese;

    QString in(bool isEnglish) const { return QString::fromUtf8(isEnglish ? english : chinese); }
};

/// Every message that the tool shows in a box. Odd spellings and full-width signs are wanted: users
/// and test benches know the messages by them.
namespace texts {

/// Title of every box, for good news too.
inline constexpr char boxTitle[] = "Warnning";

inline constexpr Text serialOpeningFailed{"Serial opening failed !", "串口打开失败！"};
inline constexpr Text communicationFailure{"Communication failure !", "通信失败！"};
inline constexpr Text dataNotMeetRequirements{"The data do not meet the requirements !",
                                              "数据不符合要求！"};
inline constexpr Text downloadComplete{"The download is complete !", "下载完成！"};
inline constexpr Text notSelectFile{"Not select file !", "未选中文件 !"};
/// %1 is the number of the row.
inline constexpr Text rowIsNotNumber{"The %1 row position is not number !", "%1 行不是数字 !"};
inline constexpr Text fileIsNotPicture{"The file is not picture !", "该文件不是图片！"};
inline constexpr Text pictureTooLarge{
    "The picture is too large !\nPictures of up to 100 million pixels can be used.",
    "图片过大！\n最多支持1亿像素的图片。"};
inline constexpr Text jpegTooLarge{
    "The picture does not fit into 64 KiB, not even at the lowest JPEG quality !\nMake it smaller "
    "or simpler, then open it again.",
    "即使使用最低的JPEG质量，该图片仍超过64 KiB！\n请缩小或简化图片后重新打开。"};
inline constexpr Text screenSizeError{"The srceen size error !", "尺寸错误！"};
inline constexpr Text unselectedOsFile{"Unselected OS file !", "未选中OS文件！"};
inline constexpr Text osFileTooSmall{"The OS file size is less than 0X1000 !",
                                     "OS文件不能小于1000！"};
inline constexpr Text osFileTooLarge{
    "The OS file is too large !\nThe module takes files of up to 126976 bytes.",
    "OS文件过大！\n模块最多接受126976字节的文件。"};
inline constexpr Text notCfgFile{"The file is not the correct CFG file !",
                                 "该文件不是正确的CFG文件！"};
inline constexpr Text folderNameTooLong{"The folder name is longer than 8 !",
                                        "文件夹字符数量超过8！"};
inline constexpr Text keyError{"Decryption data error !", "加密数据错误！"};
inline constexpr Text checkFinished{"Check finish !", "校验完成！"};
inline constexpr Text conversionComplete{"Image conversion complete !", "图片转换完成！"};
inline constexpr Text libraryFinished{"Creat finish！", "创建完成！"};
inline constexpr Text invalidLibrary{"Invalid ICO file !", "无效的ICO文件！"};
inline constexpr Text libraryTooLarge{
    "The icons do not fit into one ICO file, which holds 512 MB. Nothing was written.",
    "图标总量超出一个ICO文件的容量（512 MB），未写入任何内容。"};
/// %1 are file names, a line each.
inline constexpr Text misplacedPictures{
    "Left out, because the number at the start of the name is above 32767:\n%1",
    "以下图片文件名开头的编号大于32767，未写入：\n%1"};
inline constexpr Text fileTooLarge{"The file is too large !", "文件过大！"};
inline constexpr Text fileNotRead{"The file could not be read to its end !\nNothing of it is used. "
                                  "Check the disk or the network, "
                                  "then try again.",
                                  "文件未能完整读取！\n其内容均未使用。请检查磁盘或网络后重试。"};
inline constexpr Text oldFileNotKept{
    "The old file could not be read whole. Nothing was written: what stands behind its start "
    "would be lost.\nMove it away, then try again.",
    "原有文件未能完整读取。为避免丢失其后部内容，未写入任何内容。\n请先移走该文件再重试。"};
inline constexpr Text downloadFailed{"Download failed !", "下载失败！"};

// The menu of the traffic log.
inline constexpr Text copyAll{"Copy all", "全部复制"};
inline constexpr Text saveLog{"Save log…", "保存日志…"};
inline constexpr Text fileNotWritten{"The file could not be written !", "文件写入失败！"};

// Why a port could not be opened, shown below serialOpeningFailed.
inline constexpr Text noSuchPort{
    "There is no such port. Plug the adapter in, or choose another port in the serial settings.",
    "没有这个串口。请插好适配器，或在串口设置中选择其他串口。"};
inline constexpr Text portInUse{"Another program is using the port. Close that program first.",
                                "串口正被其他程序占用。请先关闭该程序。"};
/// %1 are the programs, where the system tells.
inline constexpr Text portHeldBy{"Another program is using the port. Close that program first.\n"
                                 "It is held by %1.",
                                 "串口正被其他程序占用。请先关闭该程序。\n占用它的程序：%1。"};
inline constexpr Text portIsOurOwn{
    "The tool itself has the port open, for its other link. Choose different ports for UART2 and "
    "ED2 in the serial settings. An ED2 port that a stopped download left open is closed when the "
    "next ED2 download ends, a UART2 port by Stop on an ED2 page, and both with the tool.",
    "本工具的另一条链路已打开该串口。请在串口设置中为UART2和ED2选择不同的串口。"
    "停止下载后仍打开的ED2串口，会在下一次ED2下载结束时关闭；UART2串口可用ED2页面的“停止”关闭；"
    "退出本工具时两者都会关闭。"};
inline constexpr Text noPermission{
    "You have no permission to use the port. Add your user to the group dialout, then log in "
    "again.",
    "没有使用该串口的权限。请把当前用户加入 dialout 组，然后重新登录。"};
inline constexpr Text notASerialPort{"The port does not accept serial settings.",
                                     "该端口不接受串口参数。"};

} // namespace texts
