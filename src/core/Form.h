#pragma once
// Windows are models: a Form holds its controls as fields and its buttons as operations.
// The registry keeps the loaded forms in load order, as the program's Forms collection does.
#include <memory>
#include <string>
#include <vector>

#include "core/Signal.h"

namespace tlx {

class Scheduler;

class Form {
public:
    explicit Form(std::string name) : name_(std::move(name)) {}
    virtual ~Form() = default;
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    const std::string& Name() const { return name_; }
    const std::string& Caption() const { return caption_; }
    void setCaption(std::string c) {
        caption_ = std::move(c);
        changed();
    }
    bool Visible() const { return visible_; }
    void Show() {
        visible_ = true;
        changed();
    }
    void Hide() {
        visible_ = false;
        changed();
    }
    bool topMost = false;

    // Raised whenever a field a view shows has changed.
    Signal<> changed;

protected:
    friend class FormRegistry;
    // Form_Unload: last work before the form goes.
    virtual void unloading() {}

private:
    std::string name_;
    std::string caption_;
    bool visible_ = false;
};

class FormRegistry {
public:
    explicit FormRegistry(Scheduler& scheduler) : scheduler_(scheduler) {}
    ~FormRegistry();

    template <class T, class... A>
    T& load(A&&... args) {
        auto f = std::make_unique<T>(std::forward<A>(args)...);
        T& ref = *f;
        forms_.push_back(std::move(f));
        loaded(ref);
        return ref;
    }
    // Unloads a form; it is destroyed once the current event has returned, so a form may
    // unload itself from one of its own handlers.
    void unload(Form& form);
    Form* find(const std::string& name) const;
    template <class T>
    T* get(const std::string& name) const {
        return dynamic_cast<T*>(find(name));
    }
    bool isLoaded(const std::string& name) const { return find(name) != nullptr; }
    // Loaded forms in load order.
    std::vector<Form*> all() const;
    std::size_t count() const { return forms_.size(); }

    Signal<Form&> loaded;
    Signal<Form&> unloaded;

private:
    Scheduler& scheduler_;
    std::vector<std::unique_ptr<Form>> forms_;
    std::vector<std::unique_ptr<Form>> graveyard_;
    std::uint64_t sweep_ = 0;
};

}  // namespace tlx
