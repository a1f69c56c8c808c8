#pragma once

#include "platform/failure.h"

#include <cstdint>
#include <string>
#include <utility>

namespace quillport {

/// The control's one error object. It is shared by all procedures and persists: a failure stays pending
/// until something clears it, and a later test takes it for its own.
class ErrorState {
public:
    /// 0 when nothing is pending.
    [[nodiscard]] std::int32_t Number() const noexcept { return number_; }
    [[nodiscard]] const std::string& Description() const noexcept { return description_; }

    void clear() noexcept {
        number_ = 0;
        description_.clear();
    }
    void record(const Failure& failure) {
        number_ = failure.number();
        description_ = failure.description();
    }

private:
    std::int32_t number_ = 0;
    std::string description_;
};

/// Carry-on mode, for the stretch in which the object lives: a failing statement is recorded and the next
/// one runs. Making it clears the error object; a later success does not.
class CarryOn {
public:
    explicit CarryOn(ErrorState& error) : error_(error) { error_.clear(); }
    CarryOn(const CarryOn&) = delete;
    CarryOn& operator=(const CarryOn&) = delete;

    /// Runs a statement and records its failure.
    template <typename Statement>
    void run(Statement&& statement) {
        try {
            std::forward<Statement>(statement)();
        } catch (const Failure& failure) {
            error_.record(failure);
        }
    }

    /// Assigns what the expression gives; one that fails leaves the variable as it was.
    template <typename Variable, typename Expression>
    void assign(Variable& variable, Expression&& expression) {
        run([&] { variable = std::forward<Expression>(expression)(); });
    }

    /// What an expression gives; one that fails gives the empty value, such as an empty result word.
    template <typename Expression>
    [[nodiscard]] auto valueOf(Expression&& expression) {
        decltype(expression()) value{};
        assign(value, std::forward<Expression>(expression));
        return value;
    }

    /// Answers a test. One that fails answers true: the first statement of its branch runs next.
    template <typename Condition>
    [[nodiscard]] bool test(Condition&& condition) {
        try {
            return std::forward<Condition>(condition)();
        } catch (const Failure& failure) {
            error_.record(failure);
            return true;
        }
    }

private:
    ErrorState& error_;
};

/// Jump mode: runs the stretch up to its end or its first failure. False when it failed: control goes to
/// the procedure's error label. The failure is pending then; entering the mode clears nothing.
template <typename Stretch>
[[nodiscard]] bool ranToItsEnd(ErrorState& error, Stretch&& stretch) {
    try {
        std::forward<Stretch>(stretch)();
        return true;
    } catch (const Failure& failure) {
        error.record(failure);
        return false;
    }
}

/// Stands at the start of every event handler: the handler begins with a clear error object, and what it
/// found there is back when it returns or a failure leaves it. So a failure that waits through a transfer
/// is not wiped by the handlers, and a click inside a running call leaves nothing behind in it.
class HandlerBorder {
public:
    explicit HandlerBorder(ErrorState& error) : error_(error), found_(std::exchange(error, ErrorState())) {}
    ~HandlerBorder() { error_ = std::move(found_); }
    HandlerBorder(const HandlerBorder&) = delete;
    HandlerBorder& operator=(const HandlerBorder&) = delete;

private:
    ErrorState& error_;
    ErrorState found_;
};

} // namespace quillport
