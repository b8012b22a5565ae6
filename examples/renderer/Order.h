#ifndef RENDERER_ORDER_H
#define RENDERER_ORDER_H

#include <string>
#include <utility>
#include <vector>

#include "core/LOGObject.h"

/// A message that is not a text: what the shop knows of an order, which only becomes text when a
/// line of it is written.
class Order : public LOGObject {
 public:
  Order(int number, std::vector<std::string> articles)
      : LOGObject("order " + std::to_string(number)), m_articles(std::move(articles)) {
    instance("Order");  // what renderers are found by
  }
  /// Each event owns a copy, which may be written later and on another thread.
  LOGObject* clone() const override { return new Order(*this); }

  const std::vector<std::string>& articles() const { return m_articles; }

 private:
  std::vector<std::string> m_articles;
};

#endif
