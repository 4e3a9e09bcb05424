// Small solids where objects are, and lines along paths.
import { BoxGeometry, BufferGeometry, ConeGeometry, Line, LineBasicMaterial, Mesh, MeshBasicMaterial, OctahedronGeometry,
    SphereGeometry, Vector3 } from "three";

const STYLES = {
    start: [new ConeGeometry(6, 16, 12), 0x50dc5a],
    light: [new SphereGeometry(4, 12, 8), 0xffdc5a],
    spotlight: [new SphereGeometry(4, 12, 8), 0xffbe1e],
    model: [new BoxGeometry(10, 10, 10), 0x5aaaff],
    "extended model": [new BoxGeometry(10, 10, 10), 0x3c6ee6],
    sound: [new OctahedronGeometry(7), 0xe66edc],
};

export function addMarks(scene, entities, unit) {
    for (const { node, data } of entities) {
        const style = STYLES[data.type];
        if (style && data.position) {
            const mark = new Mesh(style[0], new MeshBasicMaterial({ color: style[1] }));
            mark.scale.setScalar(unit);
            mark.position.copy(node.getWorldPosition(new Vector3()));
            scene.add(mark);
        } else if (data.points) {
            const points = data.points.map((point) => node.parent.localToWorld(new Vector3(...point)));
            scene.add(new Line(new BufferGeometry().setFromPoints(points), new LineBasicMaterial({ color: 0xff963c })));
        }
    }
}
