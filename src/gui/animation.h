// Timed value changes that the main loop steps: the queue of running animations, and tweens, which lead a
// value along a cubic Bezier curve and hand each step to a consumer. Scroll areas are animations of their
// own.
//
// Neither queue nor tween owns anything; whoever owns an animation takes it out of the queue before it dies
// (a tween does that by itself). GUI thread only.
#pragma once

#include <cstdint>

#include "foundation/array.h"
#include "foundation/clock.h"
#include "foundation/geometry.h"

class CVrAnimation {
public:
    virtual ~CVrAnimation() = default;
    virtual void Update(uint64_t now) = 0; // one step, ms
    virtual void Cancel() = 0;             // ends at once, without a last value
    virtual bool IsFinished() const = 0;   // the queue can drop it
};

// The running animations: two, no more. A third one cancels the oldest.
class CVrAnimQueue {
public:
    static constexpr uint32_t kSlots = 2;

    void Add(CVrAnimation* animation);
    void Remove(const CVrAnimation* animation); // every entry of it
    bool IsEmpty() const { return count == 0; }
    bool Holds(const CVrAnimation* animation) const;

    // One pass of the main loop: steps every entry, oldest first, then drops the finished ones. True: the
    // queue was not empty, so that the next pass should come soon. Steps may add and remove animations.
    bool Step(uint64_t now);

    uint32_t count = 0; // 0..2
    uint32_t head = 0;  // slot of the next insertion
    uint32_t tail = 0;  // slot of the oldest entry
    CVrAnimation* slots[kSlots] = {};

private:
    static constexpr uint32_t Other(uint32_t slot) { return 1 - slot; }
    CVrAnimation*& Entry(uint32_t index) { return slots[(tail + index) % kSlots]; }
    CVrAnimation* Entry(uint32_t index) const { return slots[(tail + index) % kSlots]; }
    void DropOldest();
};

// The queue of the one application; null while there is none.
CVrAnimQueue* RunningAnimations();

template <typename T>
class IVrAnimConsumer {
public:
    virtual void OnAnimValue(T& value) = 0;

protected:
    ~IVrAnimConsumer() = default;
};

// An array of values as one value of a tween, element by element. Both sides of an operation have the same
// number of entries; what one side has beyond the other is dropped.
template <typename T>
class CVrAnimArray : public VrArray<T> {
public:
    CVrAnimArray operator-(const CVrAnimArray& other) const {
        return Combine(other, [](const T& a, const T& b) { return AnimDifference(a, b); });
    }
    CVrAnimArray operator+(const CVrAnimArray& other) const {
        return Combine(other, [](const T& a, const T& b) { return AnimSum(a, b); });
    }
    CVrAnimArray operator*(float factor) const {
        CVrAnimArray result(*this);
        for (T& value : result)
            value = AnimScaled(value, factor);
        return result;
    }

private:
    template <typename Operation>
    CVrAnimArray Combine(const CVrAnimArray& other, Operation operation) const {
        CVrAnimArray result(*this);
        if (other.GetSize() < result.GetSize())
            result.SetSize(other.GetSize());
        for (uint32_t i = 0; i < result.GetSize(); i++)
            result[i] = operation(result[i], other[i]);
        return result;
    }
};

// ---- The arithmetic of what can be led from a start to an end ----

CVrRect AnimDifference(const CVrRect& a, const CVrRect& b);
CVrRect AnimSum(const CVrRect& a, const CVrRect& b);
CVrRect AnimScaled(const CVrRect& a, float factor); // each component truncated toward zero

template <typename T>
CVrAnimArray<T> AnimDifference(const CVrAnimArray<T>& a, const CVrAnimArray<T>& b) {
    return a - b;
}
template <typename T>
CVrAnimArray<T> AnimSum(const CVrAnimArray<T>& a, const CVrAnimArray<T>& b) {
    return a + b;
}
template <typename T>
CVrAnimArray<T> AnimScaled(const CVrAnimArray<T>& a, float factor) {
    return a * factor;
}

// Control points x1, y1, x2, y2 of a cubic Bezier curve from (0, 0) to (1, 1).
struct CVrAnimCurve {
    float x1 = 0.42F, y1 = 0.0F, x2 = 0.58F, y2 = 1.0F;
};

// y of the curve at x = t; 0 and 1 outside 0..1.
float EaseBezier(const CVrAnimCurve& curve, float t);

template <typename T>
class CVrTweenAnimation : public CVrAnimation {
public:
    static constexpr uint32_t kDefaultDuration = 200; // ms

    CVrTweenAnimation() = default;
    ~CVrTweenAnimation() override { Stop(); }
    CVrTweenAnimation(const CVrTweenAnimation&) = delete;
    CVrTweenAnimation& operator=(const CVrTweenAnimation&) = delete;

    // Begins anew, delivers `first` at once and joins the application's queue. The consumer must stay until
    // the tween is over or stopped.
    void Start(const T& first, const T& last, IVrAnimConsumer<T>* newConsumer,
               uint32_t durationMs = kDefaultDuration, const CVrAnimCurve& curve = {}) {
        Stop();
        from = first;
        to = last;
        duration = durationMs;
        bezier = curve;
        consumer = newConsumer;
        startTime = TickMs();
        done = false;
        T value = from;
        if (consumer)
            consumer->OnAnimValue(value);
        if (CVrAnimQueue* queue = RunningAnimations())
            queue->Add(this);
    }

    // Ends early, without a last value, and leaves the queue.
    void Stop() {
        if (CVrAnimQueue* queue = RunningAnimations())
            queue->Remove(this);
        done = true;
    }

    bool IsRunning() const { return !done; }

    void Update(uint64_t now) override {
        if (done || !consumer || now < startTime)
            return;
        const uint64_t elapsed = now - startTime;
        if (elapsed >= duration) {
            done = true;
            T last = to;
            consumer->OnAnimValue(last);
            return;
        }
        const float eased = EaseBezier(bezier, static_cast<float>(elapsed) / static_cast<float>(duration));
        T value = AnimSum(AnimScaled(AnimDifference(to, from), eased), from);
        consumer->OnAnimValue(value);
    }
    void Cancel() override { done = true; }
    bool IsFinished() const override { return done; }

    T from{};
    T to{};
    uint32_t duration = kDefaultDuration; // ms
    CVrAnimCurve bezier;
    IVrAnimConsumer<T>* consumer = nullptr; // not owned
    uint64_t startTime = 0;                 // tick in ms
    bool done = true;
};
