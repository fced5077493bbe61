// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/conversation/ConversationHistory.h"

#include <QLabel>
#include <QScrollBar>
#include <QVBoxLayout>

namespace velmora {
namespace {

constexpr int kSide = 20;         // logical pixels beside the texts
constexpr int kBetweenLines = 2;  // of one exchange
constexpr int kBetween = 12;

QLabel *line(const QString &text, const char *name) {
  auto *const label = new QLabel(text);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);  // it comes from outside
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

}  // namespace

ConversationHistory::ConversationHistory(QWidget *parent)
    : QScrollArea(parent), m_answer(line({}, "answer")) {
  setFrameShape(QFrame::NoFrame);
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setAccessibleName(tr("Conversation"));
  // Read with the arrow keys, where there is more than fits.
  setFocusPolicy(Qt::TabFocus);
  setStyleSheet(
      QStringLiteral("QScrollArea, QWidget#conversation { background: transparent; }"
                     "QScrollBar:vertical { background: transparent; width: 8px; }"
                     "QScrollBar::handle:vertical { background: #8a8d8d; border-radius: 4px;"
                     "  min-height: 24px; }"
                     "QScrollBar::add-line, QScrollBar::sub-line { height: 0; }"
                     "QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }"
                     "QLabel { color: #f4f4f4; }"
                     "QLabel#request { color: #c3c6c6; }"));
  auto *const conversation = new QWidget;
  conversation->setObjectName(QStringLiteral("conversation"));
  auto *const layout = new QVBoxLayout(conversation);
  layout->setContentsMargins(kSide, 0, kSide, kBetween);
  layout->setSpacing(kBetween);
  layout->addWidget(m_answer);
  m_earlier = new QVBoxLayout;
  m_earlier->setSpacing(kBetween);
  layout->addLayout(m_earlier);
  layout->addStretch();
  setWidget(conversation);
  setAnswer({});
}

void ConversationHistory::setAnswer(const QString &answer) {
  m_answer->setText(answer);
  m_answer->setVisible(!answer.isEmpty());
}

void ConversationHistory::endExchange(const QString &request) {
  const QString answer = m_answer->text();
  setAnswer({});
  verticalScrollBar()->setValue(0);
  // That nothing was heard is not worth keeping.
  if (request.isEmpty()) return;
  auto *const exchange = new QWidget;
  auto *const layout = new QVBoxLayout(exchange);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(kBetweenLines);
  layout->addWidget(line(request, "request"));
  if (!answer.isEmpty()) layout->addWidget(line(answer, "answer"));
  m_earlier->insertWidget(0, exchange);
  while (m_earlier->count() > kLongest) delete m_earlier->itemAt(kLongest)->widget();
}

void ConversationHistory::clear() {
  setAnswer({});
  while (m_earlier->count() > 0) delete m_earlier->itemAt(0)->widget();
}

}  // namespace velmora
