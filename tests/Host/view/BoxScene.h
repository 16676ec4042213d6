// The scene the view tests draw, pick and zoom on.
#pragma once

#include <QByteArray>

// One element, "Box", placed at (6, 4) field units = (0.5, 0.25) OGL units, whose drawing is a
// green square of half side 0.05 around its origin; it rotates 90 degrees from frame 1 to 10, and
// shows nothing from frame 20 on.
inline QByteArray const kBoxScene = R"(<?xml version="1.0" encoding="UTF-8"?>
<scene version="1">
 <metrics fieldToOglX="0.08333333333333333" fieldToOglY="0.0625"/>
 <group name="Top">
  <node type="READ" name="Box">
   <attrs>
    <position x="6" y="4" z="0"/>
    <rotation x="0" y="0" z="0"/>
   </attrs>
   <drawings>
    <drawing name="1">
     <polygon points="-0.05,-0.05 0.05,-0.05 0.05,0.05 -0.05,0.05" stroke="#ff00c000" fill="#ff00c000" thickness="0"/>
    </drawing>
   </drawings>
   <timing>
    <exposure frame="1" drawing="1"/>
    <exposure frame="20" drawing=""/>
   </timing>
  </node>
 </group>
 <links/>
</scene>
)";
