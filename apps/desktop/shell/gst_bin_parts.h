#pragma once

#include <gst/gst.h>

#include <QString>

#include <initializer_list>

// Small pieces every owner of a GStreamer pipeline builds with: a bin parsed
// from a description, the check that element factories exist, and a named
// child. None changes a state, so all are safe on the main thread.

namespace tarnix {

// Parses a bin with ghost pads. Any GError is a failure, because an unknown
// property still yields a bin. The bin comes back owned (not floating); null
// with the parser's text on failure.
GstElement *parseOwnedBin(const QString &description, QString *errorText);

// Whether every named element factory is installed.
bool elementFactoriesExist(std::initializer_list<const char *> names);

// The named element inside the bin, with a reference; null when missing.
GstElement *childElement(GstElement *bin, const QString &name);

// The named element inside a playbin's audio sink bin, with a reference;
// null when missing.
GstElement *audioSinkChild(GstElement *playbin, const QString &name);

} // namespace tarnix
