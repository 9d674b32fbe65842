#include "jobs/ConfinedWork.h"

#include "jobs/Sandbox.h"

#include <cerrno>
#include <memory>
#include <optional>
#include <utility>

namespace vxhost
{

ConfinedEnd RunConfined(const ConfinedTask &task, Engine *engine)
{
    const FileRules &rules = engine->RulesWith(task.readable);
    const bool mustBeConfined = engine->Options().mustBeConfined;
    WorkerTask work;
    work.descriptors = task.descriptors;
    if (rules.Get() >= 0)
        work.descriptors.push_back(rules.Get());
    work.mostAnswer = kMaxAnswer;
    work.run = [&](WorkerLink &) {
        Answer answer;
        answer.confinement = EnterSandbox(rules, engine->Calls());
        if (answer.confinement.IsWhole() || !mustBeConfined)
            task.run(&answer);
        return WriteAnswer(std::move(answer));
    };
    ConfinedEnd end;
    int error = 0;
    const std::unique_ptr<Worker> worker = Worker::Start(task.limits, work, &error);
    if (worker == nullptr) {
        end.fault = {FaultKind::NoWorker, "", error};
        return end;
    }
    Worker *const awaited = worker.get();
    (void)Worker::WaitForAny({&awaited, 1});
    WorkerEnd told = worker->TakeEnd();
    end.fault = std::move(told.fault);
    if (end.fault)
        return end;
    std::optional<Answer> answer = ReadAnswer(told.answer);
    if (!answer) {
        end.fault = {FaultKind::BadAnswer};
        return end;
    }
    end.answer = std::move(*answer);
    if (mustBeConfined && !end.answer.confinement.IsWhole())
        end.fault = {FaultKind::NotConfined};
    return end;
}

Fault FaultOf(const Failure &failure, const WorkerLimits &limits)
{
    const auto &[kind, text, error] = failure;
    switch (kind) {
    case FailureKind::None:
        return {};
    case FailureKind::CannotWrite:
        if (IsOutputLimit(limits, error))
            return {FaultKind::OutputTooLong, "", error};
        if (IsCallersFileLimit(error))
            return {FaultKind::FileTooLong, "", error};
        return {error == EPIPE ? FaultKind::ReaderLeft : FaultKind::CannotWrite, "", error};
    case FailureKind::OutOfMemory:
        if (text.empty())
            return {FaultKind::OutOfMemory};
        [[fallthrough]];
    case FailureKind::TooLarge:
        return {FaultKind::TooLarge, text, error};
    default:
        return {FaultKind::Unfit, text, error};
    }
}

} // namespace vxhost
