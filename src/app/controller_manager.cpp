#include "app/controller_manager.h"

#include <algorithm>

namespace conferix {

namespace {

template<class Entries>
auto FindName(Entries& entries, const std::string& fileName) {
    return std::find_if(entries.begin(), entries.end(),
                        [&](const auto& entry) { return entry.FileName == fileName; });
}

} // namespace

int TControllerManager::AtachObserver(TObserver observer) {
    observers_.push_back({++lastObserver_, std::move(observer)});
    return lastObserver_;
}

void TControllerManager::DetachObserver(int observer) {
    std::erase_if(observers_, [&](const TObserverEntry& entry) { return entry.Number == observer; });
}

void TControllerManager::Notify(TControllerOperation operation, const std::string& fileName,
                                const TControllerPtr& controller) {
    // Copies: an observer may detach itself or another, and change the list of controllers.
    const TEntry told = {fileName, controller};
    const std::vector<TObserverEntry> observers = observers_;
    for (const TObserverEntry& entry : observers)
        if (std::any_of(observers_.begin(), observers_.end(),
                        [&](const TObserverEntry& attached) { return attached.Number == entry.Number; }))
            entry.Observer(operation, told.FileName, told.Controller);
}

void TControllerManager::AddController(const std::string& fileName, const TControllerPtr& controller) {
    if (Contains(fileName))
        throw EDuplicateController("Duplicates filename not allowed.");
    for (const TEntry& entry : controllers_)
        if (entry.Controller == controller)
            throw EDuplicateController("Duplicates controllers not allowed.");
    controllers_.push_back({fileName, controller});
    Notify(TControllerOperation::coAdded, fileName, controller);
}

void TControllerManager::RemoveController(const std::string& fileName) {
    ExtractController(fileName);
}

TControllerManager::TControllerPtr TControllerManager::ExtractController(const std::string& fileName) {
    const auto entry = FindName(controllers_, fileName);
    if (entry == controllers_.end())
        return nullptr;
    TControllerPtr controller = std::move(entry->Controller);
    controllers_.erase(entry);
    Notify(TControllerOperation::coRemoved, fileName, controller);
    return controller;
}

bool TControllerManager::Contains(const std::string& fileName) const {
    return FindName(controllers_, fileName) != controllers_.end();
}

void TControllerManager::UpdateFileName(const std::string& oldFileName, const std::string& newFileName) {
    const auto entry = FindName(controllers_, oldFileName);
    if (entry == controllers_.end() || oldFileName == newFileName)
        return;
    if (Contains(newFileName))
        throw EDuplicateController("Duplicates filename not allowed.");
    entry->FileName = newFileName;
    Notify(TControllerOperation::coRenamed, newFileName, entry->Controller);
}

} // namespace conferix
