#pragma once

#include "app/validador_controller.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// A file name or controller is registered already.
class EDuplicateController : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What happened to a controller of the manager.
enum class TControllerOperation { coAdded, coRemoved, coRenamed };

/// The controllers of all open files, by file name.
class TControllerManager {
  public:
    using TControllerPtr = std::shared_ptr<IValidadorController>;
    /// Told the operation, the file name (the new one after a renaming) and the controller.
    using TObserver = std::function<void(TControllerOperation, const std::string&, const TControllerPtr&)>;

    /// Answers a number by which the observer is detached.
    int AtachObserver(TObserver observer);
    void DetachObserver(int observer);

    /// Raises EDuplicateController.
    void AddController(const std::string& fileName, const TControllerPtr& controller);
    /// Nothing happens for a name that is not there.
    void RemoveController(const std::string& fileName);
    /// Removes and answers the controller; null for a name that is not there.
    TControllerPtr ExtractController(const std::string& fileName);
    bool Contains(const std::string& fileName) const;
    /// 0-based, in the order in which the controllers were added. Raises std::out_of_range.
    const TControllerPtr& GetController(std::size_t index) const { return controllers_.at(index).Controller; }
    std::size_t Count() const { return controllers_.size(); }
    /// Gives a controller another name, after its file was saved under it. Raises EDuplicateController when
    /// another controller has that name.
    void UpdateFileName(const std::string& oldFileName, const std::string& newFileName);

  private:
    struct TEntry {
        std::string FileName;
        TControllerPtr Controller;
    };
    struct TObserverEntry {
        int Number;
        TObserver Observer;
    };

    void Notify(TControllerOperation operation, const std::string& fileName,
                const TControllerPtr& controller);

    std::vector<TEntry> controllers_;
    std::vector<TObserverEntry> observers_;
    int lastObserver_ = 0;
};

} // namespace conferix
