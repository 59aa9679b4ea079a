// A function as an argument: a view of any callable, for the length of the call that it is handed to.

#ifndef VRXMATH_NUMERIC_FUNCTION_VIEW_H_
#define VRXMATH_NUMERIC_FUNCTION_VIEW_H_

#include <memory>
#include <type_traits>
#include <utility>

namespace vrx {

template <class SIGNATURE>
class FunctionView;

/// Calls the callable that it was made from, implicitly, so that a lambda can stand where a view is asked for. Owns nothing
/// and allocates nothing: the callable must outlive the view.
template <class RESULT, class... ARGS>
class FunctionView<RESULT(ARGS...)> {
 public:
  template <class CALLABLE>
  requires(!std::is_same_v<std::remove_cvref_t<CALLABLE>, FunctionView> &&
           std::is_invocable_r_v<RESULT, CALLABLE&, ARGS...>)
      FunctionView(CALLABLE&& callable) {  // NOLINT(bugprone-forwarding-reference-overload): not for views
    using Callable = std::remove_reference_t<CALLABLE>;
    if constexpr (std::is_function_v<Callable>) {
      target_.function = reinterpret_cast<void (*)()>(std::addressof(callable));
      call_ = [](Target target, ARGS... arguments) -> RESULT {
        return (*reinterpret_cast<Callable*>(target.function))(std::forward<ARGS>(arguments)...);
      };
    } else {
      target_.object = std::addressof(callable);
      call_ = [](Target target, ARGS... arguments) -> RESULT {
        return (*static_cast<Callable*>(const_cast<void*>(target.object)))(std::forward<ARGS>(arguments)...);
      };
    }
  }

  RESULT operator()(ARGS... arguments) const { return call_(target_, std::forward<ARGS>(arguments)...); }

 private:
  union Target {
    const void* object;
    void (*function)();
  };
  Target target_;
  RESULT (*call_)(Target, ARGS...);
};

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_FUNCTION_VIEW_H_
