#pragma once

#include "history/history_get_by_file_model.h"
#include "history/history_get_by_plan_model.h"

#include <QFutureWatcher>
#include <QJsonDocument>
#include <QPointer>
#include <QSharedPointer>
#include <QTemporaryFile>
#include <QTimer>
#include <QUuid>
#include <QWidget>

class QComboBox;
class QLabel;
class QProgressBar;
class QSortFilterProxyModel;
class QPushButton;
class QTableView;

namespace TWB::Host {

/// The History tab: the runs of all plans or of one, newest first, and below them the file operations
/// of the selected run (of all runs shown when none is selected), with filters and a CSV export.
/// It follows the service's notices of runs starting and ending.
class HistoryView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(HistoryView)
public:
    explicit HistoryView(QWidget* parent = nullptr);
    ~HistoryView() override;

    /// False when the host registered no history models; the tab then has nothing to show.
    bool hasModels() const { return m_runs && m_files; }

    QComboBox* planBox() const { return m_plan; }
    QComboBox* periodBox() const { return m_period; }
    QComboBox* resultBox() const { return m_result; }
    QComboBox* operationBox() const { return m_operation; }
    QTableView* runsView() const { return m_runsView; }
    QTableView* filesView() const { return m_filesView; }
    QPushButton* exportButton() const { return m_export; }
    QProgressBar* exportProgress() const { return m_progress; }
    QLabel* statusLabel() const { return m_status; }
    /// The "DbID" of the run whose operations are shown; 0 for all runs shown.
    qint64 selectedRun() const;

    /// Loads the runs of the chosen plan and period, and the operations below them.
    void reload();
    /// Writes the runs, or the file operations shown, to a CSV file at `path`; what the two
    /// entries of the Export menu do once the save dialog has a name.
    void exportRuns(const QString& path);
    void exportFiles(const QString& path);
    bool isExporting() const { return !m_exportPath.isEmpty(); }

Q_SIGNALS:
    /// An export ended: written to `path`, or failed with `error`.
    void exportFinished(const QString& path, const QString& error);

private:
    void fillPlans();
    void loadFiles();
    void onRunsLoaded();
    void onNotification(const QJsonDocument& document);
    void askExportPath(bool runs);
    void startExport(const QString& path, int total);
    void onExportReady(const QSharedPointer<QTemporaryFile>& file);
    void onExportSaved();
    void onModelError(const QString& text);
    void finishExport(const QString& error);
    QUuid chosenPlan() const;
    int chosenPeriod() const;

    QPointer<TWB::GUI::HistoryGetByPlanModel> m_runs; // not owned: the registry's
    QPointer<TWB::GUI::HistoryGetByFileModel> m_files; // not owned: the registry's
    QSortFilterProxyModel* m_runsByResult = nullptr; // owned by parent-child
    QComboBox* m_plan = nullptr; // owned by parent-child
    QComboBox* m_period = nullptr; // owned by parent-child
    QComboBox* m_result = nullptr; // owned by parent-child
    QComboBox* m_operation = nullptr; // owned by parent-child
    QTableView* m_runsView = nullptr; // owned by parent-child
    QTableView* m_filesView = nullptr; // owned by parent-child
    QLabel* m_filesTitle = nullptr; // owned by parent-child
    QPushButton* m_export = nullptr; // owned by parent-child
    QProgressBar* m_progress = nullptr; // owned by parent-child
    QLabel* m_status = nullptr; // owned by parent-child
    QTimer m_refresh; // gathers the notices of several runs ending at once into one reload
    qint64 m_keepRun = 0; // the run to select again once a reload brings it
    QString m_exportPath;
    int m_exportLines = 0;
    QFutureWatcher<QString> m_save;
};

} // namespace TWB::Host
