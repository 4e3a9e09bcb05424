#include "desktop/build_thread.h"

#include <QMetaObject>
#include <utility>

#include "desktop/options_dialog.h"
#include "driver/build_options.h"
#include "driver/run_stats.h"

namespace k2k {

BuildThread::BuildThread(std::string command, const StageEntries& stages, RunWindow& window)
    : thread_([this, command = std::move(command), &stages, &window] { Run(command, stages, window); }) {}

void BuildThread::Run(const std::string& command, const StageEntries& stages, RunWindow& window) {
    const ShowDialog showDialog = [&window](DialogControls& controls) {
        DialogAnswer answer = DialogAnswer::Cancel;
        QMetaObject::invokeMethod(
            &window, [&] { answer = ShowOptionsDialog(controls); }, Qt::BlockingQueuedConnection);
        return answer;
    };
    RunEnd end;
    end.status = RunProgram(command, stages, window.RunDisplay(), showDialog);
    end.finished = window.RunDisplay().RunFinished();
    end.close = Options().close;
    WriteRunStats();
    ended_ = true;
    QMetaObject::invokeMethod(
        &window, [&window, end] { window.EndRun(end); }, Qt::QueuedConnection);
}

}  // namespace k2k
