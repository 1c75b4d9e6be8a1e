#pragma once

#include <QMetaType>
#include <QSharedPointer>
#include <QString>

#include <memory>
#include <vector>

namespace TWB::GUI {

/// One file or folder of a checked file tree. A plain struct rather than an object: a folder may hold a
/// hundred thousand of them, and each costs a few dozen bytes instead of a QObject's kilobyte.
struct FileNode
{
    /// Null when the name is the last part of realPath.
    QString name;
    /// The path a plan stores; null when it is the parent's path, a separator and the name.
    QString path;
    /// The path on this machine; the key of the model's path index.
    QString realPath;
    /// Why the folder could not be listed; empty while it could.
    QString error;
    FileNode* parent = nullptr; // not owned
    std::vector<std::unique_ptr<FileNode>> children;
    int row = 0;
    int checked = 0;
    /// How many children stand in each check state (0, 1, 2, 1001), hidden ones included, so that the
    /// upward walks of a check mark need not scan a large folder for each mark.
    int stateCount[4] = {0, 0, 0, 0};
    int hiddenChildren = 0;
    quint8 type = 0;
    quint8 load = 0;
    bool isChangeable = true;
    bool isExpandable = false;
    bool isHidden = false;
    bool isSymlink = false;

    static int stateSlot(int state) { return state == 1001 ? 3 : qBound(0, state, 2); }
};

using FileNodeList = std::vector<std::unique_ptr<FileNode>>;
/// Nodes on their way from a listing thread to the model; nodes nobody took are freed with the last copy.
using FileNodeBatch = QSharedPointer<FileNodeList>;

} // namespace TWB::GUI

Q_DECLARE_METATYPE(TWB::GUI::FileNodeBatch)
