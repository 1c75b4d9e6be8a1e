#pragma once

// A plan on an account backs up through twbd, and a restore plan brings its files back whole.

#include "engine_test_support.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"

#include <QtTest>

#include <functional>

namespace TWB::Test {

/// Writes a small tree under `root`/`name`, backs it up with a plan that `onAccount` puts on the account,
/// restores it elsewhere and compares. Failures are reported through QtTest in the calling test.
inline void backsUpAndRestores(RawClient& client, const QString& root, const QString& name,
    const std::function<bool(TWB::Info::Plan::Base*)>& onAccount)
{
    const QString source = root + QLatin1Char('/') + name;
    EngineTestSupport::writeFile(source + QStringLiteral("/scan.raw"), EngineTestSupport::noise(256 * 1024, 7));
    EngineTestSupport::writeFile(source + QStringLiteral("/index.txt"), "index\n");
    TWB::Info::Plan::BackupFile plan;
    plan.setId(QUuid::createUuid());
    plan.setName(name);
    plan.setItems({source});
    QVERIFY(onAccount(&plan));
    QVERIFY(EngineTestSupport::save(client, plan));
    const RunOutcome backup = EngineTestSupport::run(client, plan.id());
    QVERIFY2(backup.status == 6, qPrintable(backup.message));

    TWB::Info::Plan::RestoreFile back;
    back.setId(QUuid::createUuid());
    back.setName(name + QStringLiteral(" back"));
    QVERIFY(onAccount(&back));
    const QString target = source + QStringLiteral("-out");
    back.setRestoreItems({QStringLiteral("/TWB_VOLUMES/root") + source});
    back.setRestoreToOriginalLocation(false);
    back.setDestination(target);
    QVERIFY(EngineTestSupport::save(client, back));
    const RunOutcome restore = EngineTestSupport::run(client, back.id());
    QVERIFY2(restore.status == 6, qPrintable(restore.message));
    QCOMPARE(EngineTestSupport::tree(target + source), EngineTestSupport::tree(source));
}

} // namespace TWB::Test
