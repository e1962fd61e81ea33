// Which parts of an event are published as a web site, and where.
#pragma once

#include <QDialog>
#include <QStringList>
#include <optional>

#include "keltrun2/keltrun2.h"

/// Asks the user; nothing when the user cancels. ChartModes are the names of the chart modes in
/// their order.
std::optional<keltrun::SiteOptions> AskSiteOptions(QWidget* parent, const QStringList& chart_modes);
