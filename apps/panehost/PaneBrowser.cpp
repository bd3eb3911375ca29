#include "PaneBrowser.h"

#include "QtBridge.h"

#include <Carbon/Carbon.h>

#include <QDir>
#include <QHBoxLayout>
#include <QIcon>
#include <QMessageBox>
#include <QStyle>

namespace {

constexpr int kPathRole = Qt::UserRole;

std::optional<QString> FolderOf(FSVolumeRefNum inDomain)
{
    FSRef folder;
    if (FSFindFolder(inDomain, kPreferencePanesFolderType, false, &folder) != noErr)
        return std::nullopt;
    UInt8 path[4096];
    if (FSRefMakePath(&folder, path, sizeof path) != noErr)
        return std::nullopt;
    return QString::fromUtf8(reinterpret_cast<const char*>(path));
}

}  // namespace

QStringList PaneBrowser::InstalledPanes()
{
    QStringList panes;
    for (FSVolumeRefNum domain : {kUserDomain, kLocalDomain, kSystemDomain}) {
        std::optional<QString> folder = FolderOf(domain);
        if (!folder)
            continue;
        for (const QString& name : QDir(*folder).entryList({"*.prefPane"}, QDir::Dirs, QDir::Name)) {
            QString path = QDir(*folder).filePath(name);
            if (!panes.contains(path))
                panes << path;
        }
    }
    return panes;
}

PaneBrowser::PaneBrowser(NSWindow& inPaneWindow, PaneController& inController, const QStringList& inExtraPanes)
    : mController(inController)
{
    setWindowTitle(tr("Settings"));
    auto* layout = new QHBoxLayout(this);
    mList.setIconSize(QSize(32, 32));
    mList.setFixedWidth(200);
    layout->addWidget(&mList);
    layout->addWidget(inPaneWindow.widget(), 1);
    for (const QString& path : InstalledPanes() + inExtraPanes)
        Add(path);
    connect(&mList, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* inItem) { Show(inItem); });
}

void PaneBrowser::Add(const QString& inPath)
{
    for (int row = 0; row < mList.count(); ++row)
        if (mList.item(row)->data(kPathRole).toString() == inPath)
            return;
    NSAutoreleasePool pool;
    NSBundle* bundle = NSBundle::bundleWithPath(ToNSString(inPath));
    if (bundle == nullptr)
        return;
    NSString* label = NSString::cast(bundle->objectForInfoDictionaryKey(NSSTR("NSPrefPaneIconLabel")));
    if (label == nullptr)
        label = NSString::cast(bundle->objectForInfoDictionaryKey(NSSTR("CFBundleName")));
    NSString* iconName = NSString::cast(bundle->objectForInfoDictionaryKey(NSSTR("NSPrefPaneIconFile")));
    NSString* iconPath = iconName ? bundle->pathForResource(iconName, nullptr) : nullptr;
    QIcon icon = iconPath ? QIcon(ToQString(iconPath)) : style()->standardIcon(QStyle::SP_ComputerIcon);
    auto* item = new QListWidgetItem(icon, label ? ToQString(label) : QDir(inPath).dirName(), &mList);
    item->setData(kPathRole, inPath);
}

void PaneBrowser::Choose(const QString& inPath)
{
    Add(inPath);
    for (int row = 0; row < mList.count(); ++row)
        if (mList.item(row)->data(kPathRole).toString() == inPath)
            mList.setCurrentRow(row);
}

void PaneBrowser::Show(QListWidgetItem* inItem)
{
    if (inItem == nullptr)
        return;
    if (std::optional<QString> error = mController.Select(inItem->data(kPathRole).toString()))
        QMessageBox::warning(this, tr("Settings"), tr("The pane cannot be shown: %1").arg(*error));
}
