#include "jobs/OutputFiles.h"

#include <utility>

namespace vxhost
{

bool OutputFiles::Open(std::vector<OutputPlace> places, const OutputRules &rules, Result *result)
{
    places_ = std::move(places);
    for (const OutputPlace &place : places_) {
        files_.push_back(place.take ? OutputFile::CreateUnnamed(rules, &result->fault)
                                    : OutputFile::Create(place.path, rules, &result->fault));
        if (result->fault) {
            result->output = place.path;
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
        if (places_[i].take) {
            places_[i].take(files_[i]->Descriptor());
            continue;
        }
        result->fault = files_[i]->Commit();
        if (result->fault)
            result->output = places_[i].path;
        else
            result->written.push_back(places_[i].path);
    }
    files_.clear();
}

} // namespace vxhost
