// The page of `klvtool view`: one level, to walk through.
import { ColorManagement, LineBasicMaterial, Scene, PerspectiveCamera, WebGLRenderer, Vector3, LinearSRGBColorSpace } from "three";
import { GLTFLoader } from "three/examples/jsm/loaders/GLTFLoader.js";
import { makeModes } from "./modes.js";
import { addMarks } from "./marks.js";
import { Walker } from "./walker.js";

const UNIT = 0.0254; // metres, as in the exported level
const DEGREE = Math.PI / 180;

function levelBytes() {
    const text = atob(document.getElementById("level").textContent.trim());
    return Uint8Array.from(text, (sign) => sign.charCodeAt(0)).buffer;
}

function listEntities(entities, walker) {
    const list = document.getElementById("entities");
    for (const { node, data } of entities) {
        const item = document.createElement("li");
        const type = document.createElement("span");
        type.textContent = data.type;
        const name = data.name === data.type ? "" : data.name; // an object without a name has its type's
        item.append(type, " " + (name || data.file || ""));
        item.title = Object.entries(data).map(([key, value]) => `${key}: ${value}`).join("\n");
        if (data.position) item.addEventListener("click", () => walker.lookAt(node.getWorldPosition(new Vector3())));
        list.append(item);
    }
}

// At a place that the address names, as in #at=X,Y,Z,ANGLE,TILT; where the player starts; else outside, with the level in
// view.
function placeWalker(walker, entities, level, at) {
    const [x, y, z, angle = 0, tilt = 0] = (at ?? "").split(",").map(Number);
    if (Number.isFinite(x + y + z + angle + tilt)) {
        walker.standAt(level.children[0].localToWorld(new Vector3(x, y, z)), angle * DEGREE, tilt * DEGREE);
        return;
    }
    const start = entities.find(({ data }) => data.type === "start");
    if (start) {
        walker.standAt(start.node.getWorldPosition(new Vector3()), start.data.angles[0] * DEGREE);
    } else {
        walker.overlook(level);
    }
}

async function main() {
    ColorManagement.enabled = false;
    const address = new URLSearchParams(location.hash.slice(1));
    const canvas = document.getElementById("view");
    const renderer = new WebGLRenderer({ canvas, antialias: true });
    renderer.outputColorSpace = LinearSRGBColorSpace; // textures and lightmaps are multiplied as they are
    const scene = new Scene();
    const camera = new PerspectiveCamera(70, 1, 4 * UNIT, 40000 * UNIT);

    const gltf = await new GLTFLoader().parseAsync(levelBytes(), "");
    const level = gltf.scene;
    level.traverse((node) => {
        if (node.isLight) node.visible = false; // the lightmap has their light
        if (node.isLine) node.material = new LineBasicMaterial({ color: 0xff2828, depthTest: false });
    });
    scene.add(level);
    level.updateMatrixWorld(true);
    const entities = [];
    level.traverse((node) => { if (node.userData.type) entities.push({ node, data: node.userData }); });

    document.title = document.getElementById("name").textContent = level.name || "Level";
    const setMode = await makeModes(gltf);
    const walker = new Walker(camera, canvas, UNIT);
    addMarks(scene, entities, UNIT);
    listEntities(entities, walker);
    placeWalker(walker, entities, level, address.get("at"));

    const choose = (mode) => { setMode(mode); document.querySelector(`input[value=${mode}]`).checked = true; };
    for (const input of document.querySelectorAll("input[name=mode]")) {
        input.addEventListener("change", () => choose(input.value));
    }
    const wanted = address.get("mode");
    choose(["lit", "textures", "lightmap", "regions"].includes(wanted) ? wanted : "lit");

    const resize = () => {
        renderer.setPixelRatio(devicePixelRatio);
        renderer.setSize(innerWidth, innerHeight, false);
        camera.aspect = innerWidth / innerHeight;
        camera.updateProjectionMatrix();
    };
    addEventListener("resize", resize);
    resize();
    renderer.setAnimationLoop((time) => {
        walker.step(time);
        renderer.render(scene, camera);
        document.body.dataset.frames = renderer.info.render.frame;
        document.body.dataset.triangles = renderer.info.render.triangles;
    });
}

main();
