#pragma once

#include <cstdio>

class BaseComposerClass;
class BaseModelClass;
class SANModel;

/// A saved part of a marking.
class State {
 public:
  [[nodiscard]] virtual int hash() = 0;

  /// Below, at or above 0 as this one's bytes come before, equal or come behind the other's.
  [[nodiscard]] virtual int compare(const State& other) = 0;

  virtual void print() = 0;

  /// Non-zero if the bytes could not all be written.
  [[nodiscard]] virtual int fwriteState(std::FILE* file) = 0;

  /// Non-zero if the bytes could not all be read.
  [[nodiscard]] virtual int freadState(std::FILE* file) = 0;

  virtual const State& operator=(const State& other) = 0;

  virtual ~State() = default;

 protected:
  State() = default;
  State(const State&) = default;

  /// Brings the saved part back into the model.
  virtual void SetState(const BaseModelClass* model) = 0;

  /// Saves the model's part.
  virtual void GetState(const BaseModelClass* model) = 0;

 public:
  /// The saved bytes, which the State keeps.
  [[nodiscard]] virtual void* GetStatePtr() = 0;

 private:
  // The models save into and restore from a State that they made themselves.
  friend class BaseComposerClass;
  friend class SANModel;
};
