// Scene files: reading and writing a TUScene as XML (the format is in docs/scene-file-format.md).
//
// Reading builds a new scene and gives it only when the whole file was read without error; a
// malformed, truncated or unknown file gives null and an error naming the source and the line,
// "<source>:<line>: expected ...". The caller decides how to show it.
//
// Writing is deterministic: the same scene gives the same bytes, so a file read and written
// again without change is the same file.
#pragma once

#include "scene/MO_Node.h"

#include <QByteArray>
#include <QString>

#include <memory>

class TUScene;

namespace TUSceneFile {

// How deep groups may nest: the root group holds groups of depth 1, which hold groups of depth 2,
// and so on up to this. Deeper files are refused with the line of the first group too deep, and
// deeper scenes are not written: the walks over a scene's groups recurse once per level, and a
// limit keeps them far from the end of the stack. Real scenes nest a few levels.
constexpr int kMaxGroupDepth = 100;

// The node kinds a file may name: "PEG", "READ", "SWITCH", "MODULE", the deformers, "COMPOSITE"
// and "EFFECT". Null for any other keyword.
UT_SharedPtr<MO_Node> createNode(QString const &typeKeyword);

std::unique_ptr<TUScene> read(QByteArray const &data, QString const &source, QString *error);
std::unique_ptr<TUScene> readFile(QString const &path, QString *error);

// Links refer to nodes by instance name, so a scene is written only when every node and group
// (the root group aside) has a name of its own: otherwise the result is empty and `error` names
// the first offending node.
QByteArray write(TUScene const &scene, QString *error = nullptr);
// False with `error` set when the scene cannot be written (see write) or the file cannot.
bool writeFile(TUScene const &scene, QString const &path, QString *error);

} // namespace TUSceneFile
