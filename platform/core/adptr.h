#ifndef PLATFORM_CORE_ADPTR_H
#define PLATFORM_CORE_ADPTR_H

#include <cstddef>
#include <utility>

// Base of the core's objects that are held through handles. The count is not atomic: an object and
// its handles belong to one thread at a time.
class AdRefCounted {
  public:
    AdRefCounted() = default;
    AdRefCounted(const AdRefCounted&) = delete;
    AdRefCounted& operator=(const AdRefCounted&) = delete;

    void AddRef() const { ++m_references; }
    void Release() const {
        if (--m_references == 0) {
            delete this;
        }
    }

  protected:
    virtual ~AdRefCounted() = default;

  private:
    mutable long m_references = 0;
};

// A reference-counted handle. The object lives as long as a handle to it does.
template <typename T>
class AdPtr {
  public:
    AdPtr() = default;
    AdPtr(std::nullptr_t) {}
    explicit AdPtr(T* object) { SetPtr(object); }
    AdPtr(const AdPtr& other) { SetPtr(other.m_object); }
    AdPtr(AdPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    AdPtr& operator=(const AdPtr& other) {
        AdPtr copied(other);
        std::swap(m_object, copied.m_object);
        return *this;
    }
    AdPtr& operator=(AdPtr&& other) noexcept {
        AdPtr taken(std::move(other));
        std::swap(m_object, taken.m_object);
        return *this;
    }
    ~AdPtr() { SetPtr(nullptr); }

    // Points the handle at `object`, which may be null, and lets go of the former one.
    void SetPtr(T* object) {
        if (object != nullptr) {
            object->AddRef();
        }
        T* former = std::exchange(m_object, object);
        if (former != nullptr) {
            former->Release();
        }
    }

    T* GetPtr() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }

  private:
    T* m_object = nullptr;
};

#endif
