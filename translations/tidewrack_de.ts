<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>ConsoleWindow</name>
    <message>
        <location filename="../app/console_window.cpp" line="105"/>
        <source>Connect now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="89"/>
        <source>Backup plans</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="90"/>
        <source>Restore plans</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="93"/>
        <source>Storage accounts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="216"/>
        <source>Plans</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="223"/>
        <source>Start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="224"/>
        <source>Run the selected plan now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="225"/>
        <source>Stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="226"/>
        <source>Stop the selected plan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="228"/>
        <source>Run full backup</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="229"/>
        <source>Back up every file again, not only what changed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="231"/>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="232"/>
        <source>Remove the selected plan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="267"/>
        <source>Remove plan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="268"/>
        <source>Remove the plan &quot;%1&quot;? Its backed-up data stays on the storage.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="313"/>
        <source>Connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="314"/>
        <source>The local backup service answers on %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="329"/>
        <location filename="../app/console_window.cpp" line="363"/>
        <source>Disconnected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="330"/>
        <source>The local backup service does not answer on %1. The console keeps trying to reach it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="350"/>
        <source>Connecting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="350"/>
        <source>Looking for the local backup service…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="353"/>
        <source>Starting the service</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="353"/>
        <source>No local backup service answered, so the console started one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="371"/>
        <source>The product is being updated. The console closes when the update asks it to.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RunProgressDelegate</name>
    <message>
        <location filename="../app/run_progress_delegate.cpp" line="32"/>
        <source>%1/s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/run_progress_delegate.cpp" line="64"/>
        <source>Starting</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ServiceLauncher</name>
    <message>
        <location filename="../app/service_launcher.cpp" line="64"/>
        <source>The service program %1 is missing.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/service_launcher.cpp" line="81"/>
        <source>The service program %1 could not be started.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::AttentionFrame</name>
    <message>
        <location filename="../src/widgets/attention_frame.cpp" line="32"/>
        <source>ATTENTION: </source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::CloudsImageWidgetStandalone</name>
    <message>
        <location filename="../src/widgets/clouds_image_widget_standalone.cpp" line="12"/>
        <source>Built for cloud storage:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::DuratonDelegate</name>
    <message>
        <location filename="../src/plans/duraton_delegate.cpp" line="21"/>
        <source>N/A</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::FrequencyDaily</name>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="70"/>
        <source>Daily frequency</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="72"/>
        <source>At</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="77"/>
        <source>Every</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="80"/>
        <source>minute(s) from</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="83"/>
        <source>to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="124"/>
        <source>Occurs every day at</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="124"/>
        <source>at</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="128"/>
        <source>Occurs every day every</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="128"/>
        <source>every</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="129"/>
        <source>minute(s) between</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_daily.cpp" line="130"/>
        <source>and</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::FrequencyMonthly</name>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="25"/>
        <source>Day of Month</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="25"/>
        <source>First</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="25"/>
        <source>Second</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="25"/>
        <source>Third</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="25"/>
        <source>Fourth</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="25"/>
        <source>Penultimate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="25"/>
        <source>Last</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="31"/>
        <source>Monthly frequency</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="44"/>
        <source>Occurrence:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="46"/>
        <source>Day:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="48"/>
        <source>Repeat every:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="51"/>
        <source>months</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="54"/>
        <source>From:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="94"/>
        <location filename="../src/wizard/frequency_monthly.cpp" line="97"/>
        <source>Occurs every month on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="94"/>
        <source>day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="101"/>
        <source>Repeat every</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_monthly.cpp" line="102"/>
        <source>month. Start from:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::FrequencyWeekly</name>
    <message>
        <location filename="../src/wizard/frequency_weekly.cpp" line="33"/>
        <source>Weekly frequency</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/frequency_weekly.cpp" line="56"/>
        <source>Occurs every week on:&lt;/td&gt;&lt;/tr&gt;</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanEditWait</name>
    <message>
        <location filename="../src/wizard/plan_edit_wait.cpp" line="35"/>
        <source>Wait plan edit result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/plan_edit_wait.cpp" line="91"/>
        <source>Exec edit plan command...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/plan_edit_wait.cpp" line="113"/>
        <source>Wait command result...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/plan_edit_wait.cpp" line="120"/>
        <source>The plan could not be saved: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/plan_edit_wait.cpp" line="122"/>
        <source>The plan was saved, but it could not be started: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/plan_edit_wait.cpp" line="175"/>
        <source>Running plan...</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanFullTableModel</name>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="158"/>
        <source>ID</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="160"/>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="162"/>
        <source>SubType</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="164"/>
        <source>Shedule</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="166"/>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="168"/>
        <source>Storage name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="170"/>
        <source>Last run time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="172"/>
        <source>Last run status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="174"/>
        <source>Last run message</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="176"/>
        <source>Next run time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="178"/>
        <source>Duration</source>
        <comment>of the last run</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="180"/>
        <source>Files</source>
        <comment>count of files sent in the last run</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="182"/>
        <source>Failed</source>
        <comment>count of files that failed in the last run</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="184"/>
        <source>Size</source>
        <comment>bytes sent in the last run</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_full_table_model.cpp" line="186"/>
        <source>Plan XML</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanQuickPlanStatus</name>
    <message>
        <location filename="../src/plans/plan_quick_plan_status.cpp" line="25"/>
        <source>N/A</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanResultDelegate</name>
    <message>
        <location filename="../src/plans/plan_result_delegate.cpp" line="21"/>
        <location filename="../src/plans/plan_result_delegate.cpp" line="27"/>
        <source>N/A</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanStates</name>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="21"/>
        <source>Unknown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="22"/>
        <source>Starting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="23"/>
        <source>Updated file search</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="24"/>
        <source>Running</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="25"/>
        <source>Purging files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="26"/>
        <source>Pausing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="27"/>
        <source>Paused</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="28"/>
        <source>Success</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="29"/>
        <source>Warning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="30"/>
        <source>Fail</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="31"/>
        <source>Interrupted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="33"/>
        <source>Interrupted by schedule</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="34"/>
        <source>Updating repository</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="35"/>
        <source>Stopping</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="36"/>
        <source>Creating VSS snapshot</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="37"/>
        <source>Calculating MD5</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="38"/>
        <source>Instant backup</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="39"/>
        <source>Interrupted for update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="41"/>
        <source>Running pre backup action</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="43"/>
        <source>Running post backup action</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="44"/>
        <source>Preparing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="45"/>
        <source>Downloading</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="46"/>
        <source>Running windows backup</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="48"/>
        <source>Interrupted system sleep</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="50"/>
        <source>Interrupted by switching to battery</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_states.cpp" line="52"/>
        <source>Interrupted by network filter</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanTableModel</name>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="280"/>
        <source>ID</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="282"/>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="284"/>
        <source>SubType</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="286"/>
        <source>Shedule</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="288"/>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="290"/>
        <source>Last run message</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="292"/>
        <source>Last run status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="294"/>
        <source>Last run time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="296"/>
        <source>Next run time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="298"/>
        <source>Duration</source>
        <comment>of the last run</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="300"/>
        <source>Files</source>
        <comment>count of files sent in the last run</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="302"/>
        <source>Failed</source>
        <comment>count of files that failed in the last run</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="304"/>
        <source>Size</source>
        <comment>bytes sent in the last run</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/plan_table_model.cpp" line="306"/>
        <source>Type</source>
        <comment>plan type: file, disk image...</comment>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanTypeDelegate</name>
    <message>
        <location filename="../src/plans/plan_type_delegate.cpp" line="25"/>
        <source>N/A</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanWizardBase::PageBase</name>
    <message>
        <location filename="../src/wizard/page_base.cpp" line="17"/>
        <source>Backup plan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_base.cpp" line="19"/>
        <source>Restore plan</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanWizardBase::PageName</name>
    <message>
        <location filename="../src/wizard/page_name.cpp" line="13"/>
        <source>Plan name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_name.cpp" line="15"/>
        <source>Specify plan name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_name.cpp" line="18"/>
        <location filename="../src/wizard/page_name.cpp" line="51"/>
        <source>Plan name:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanWizardBase::PageSchedule</name>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="53"/>
        <source>Schedule</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="55"/>
        <source>Plan can be run manually or automatically by schedule</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="57"/>
        <source>Enable schedule</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="62"/>
        <source>Specific date:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="68"/>
        <source>Recurring. Frequency Type:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="70"/>
        <source>Daily</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="70"/>
        <source>Weekly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="70"/>
        <source>Monthly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="89"/>
        <source>Run missed scheduled plan immediately upon boot-up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="91"/>
        <location filename="../src/wizard/page_schedule.cpp" line="224"/>
        <source>Stop plan if it runs for:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="94"/>
        <location filename="../src/wizard/page_schedule.cpp" line="225"/>
        <source>hour(s)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="97"/>
        <source>minute(s)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="190"/>
        <source>The scheduled date is in the past. Do you want to continue?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="205"/>
        <source>Schedule:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="207"/>
        <source>Not scheduled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="210"/>
        <source>Run missed plan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="213"/>
        <source>Occurs on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_schedule.cpp" line="226"/>
        <source>minutes(s)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::PlanWizardBase::PageSummary</name>
    <message>
        <location filename="../src/wizard/page_summary.cpp" line="13"/>
        <source>Summary</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_summary.cpp" line="15"/>
        <source>Review plan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/wizard/page_summary.cpp" line="19"/>
        <source>Run plan now</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::SizeDelegate</name>
    <message>
        <location filename="../src/plans/size_delegate.cpp" line="22"/>
        <source>N/A</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::StorageConnectionsModel</name>
    <message>
        <location filename="../src/storages/storage_connections_model.cpp" line="226"/>
        <source>There isn&apos;t such storage account in model</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::StorageNameDelegate</name>
    <message>
        <location filename="../src/plans/storage_name_delegate.cpp" line="23"/>
        <location filename="../src/plans/storage_name_delegate.cpp" line="28"/>
        <location filename="../src/plans/storage_name_delegate.cpp" line="31"/>
        <source>Unknown</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TWB::GUI::TrueFalseDelegate</name>
    <message>
        <location filename="../src/plans/true_false_delegate.cpp" line="21"/>
        <source>no</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/true_false_delegate.cpp" line="23"/>
        <source>yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/plans/true_false_delegate.cpp" line="24"/>
        <source>N/A</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TimeDuraton</name>
    <message>
        <location filename="../src/platform/utility/time_duraton.cpp" line="19"/>
        <source>N/A</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/time_duraton.cpp" line="25"/>
        <source>%1 d %2 h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/time_duraton.cpp" line="27"/>
        <source>%1 h %2 min</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/time_duraton.cpp" line="29"/>
        <source>%1 min %2 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/time_duraton.cpp" line="30"/>
        <source>%1 s</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>transform</name>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="13"/>
        <source>N/A</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="19"/>
        <source>%1 B</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="21"/>
        <source>KB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="21"/>
        <source>MB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="22"/>
        <source>GB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="22"/>
        <source>TB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="23"/>
        <source>PB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="23"/>
        <source>EB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="24"/>
        <source>ZB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../src/platform/utility/transform.cpp" line="24"/>
        <source>YB</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
