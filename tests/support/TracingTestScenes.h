// Scenes written out for the tests of tracing (the drawing view, the pencil), and a session made
// from one. Header only: the tests that include it link the host's scene and session libraries.
#pragma once

#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"

#include <gtest/gtest.h>

#include <memory>

namespace TracingTestScenes {

// "Bar" hangs under the peg "R": R stands at (6, 4) field units = (0.5, 0.25) OGL, turned 90
// degrees and scaled by 2, so a scene point w lies at p = S(1/2) R(-90) (w - (0.5, 0.25)) =
// ((w.y - 0.25) / 2, -(w.x - 0.5) / 2) in the drawing. The element exposes drawing "1" from frame
// 1 and nothing from frame 10.
inline QByteArray const kPeggedBar = R"(<?xml version="1.0" encoding="UTF-8"?>
<scene version="1">
 <metrics fieldToOglX="0.08333333333333333" fieldToOglY="0.0625"/>
 <group name="Top">
  <node type="PEG" name="R">
   <attrs>
    <position x="6" y="4" z="0"/>
    <rotation x="0" y="0" z="90"/>
    <scale x="2" y="2"/>
   </attrs>
  </node>
  <node type="READ" name="Bar">
   <attrs/>
   <drawings>
    <drawing name="1">
     <polygon points="0,-0.02 0.4,-0.02 0.4,0.02 0,0.02" stroke="#ff0000ff" fill="#ff0000ff" thickness="0"/>
    </drawing>
   </drawings>
   <timing>
    <exposure frame="1" drawing="1"/>
    <exposure frame="10" drawing=""/>
   </timing>
  </node>
 </group>
 <links>
  <link src="R" out="0" dst="Bar" in="0"/>
 </links>
</scene>
)";

// A session on the scene of `xml`; a scene that does not read fails the test and gives an empty one.
inline std::unique_ptr<SC_Session> sessionOf(QByteArray const &xml)
{
    QString error;
    std::unique_ptr<TUScene> scene = TUSceneFile::read(xml, QStringLiteral("scene.xml"), &error);
    EXPECT_TRUE(scene) << error.toStdString();
    return std::make_unique<SC_Session>(scene ? std::move(scene) : std::make_unique<TUScene>());
}

} // namespace TracingTestScenes
