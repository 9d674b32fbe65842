#include "jobs/OutputFiles.h"

namespace vxhost
{

bool OutputFiles::Open(const std::vector<std::string> &paths, FileKinds kinds, Result *result)
{
    paths_ = paths;
    for (const std::string &path : paths) {
        files_.push_back(OutputFile::Create(path, kinds, &result->fault));
        if (result->fault) {
            result->output = path;
            return false;
        }
    }
    return true;
}

std::vector<int> OutputFiles::Descriptors() const
{
    std::vector<int> descriptors;
    for (const auto &file : files_)
        descriptors.push_back(file->Descriptor());
    return descriptors;
}

void OutputFiles::Empty()
{
    for (const auto &file : files_)
        file->Empty();
}

void OutputFiles::Finish(Result *result)
{
    for (size_t i = 0; i < files_.size() && !result->fault; ++i) {
        result->fault = files_[i]->Commit();
        if (result->fault)
            result->output = paths_[i];
        else
            result->written.push_back(paths_[i]);
    }
    files_.clear();
}

} // namespace vxhost
