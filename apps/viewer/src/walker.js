// Looks around with the pointer and walks with the keys. Nothing stops it: walls can be passed.
import { Box3, Vector3 } from "three";

const SPEED = 220, RUN = 3; // units a second
const LOOK = 0.004; // radians a pixel
const STEPS = {
    KeyW: [0, 0, -1], ArrowUp: [0, 0, -1], KeyS: [0, 0, 1], ArrowDown: [0, 0, 1], KeyA: [-1, 0, 0], ArrowLeft: [-1, 0, 0],
    KeyD: [1, 0, 0], ArrowRight: [1, 0, 0], KeyE: [0, 1, 0], Space: [0, 1, 0], KeyQ: [0, -1, 0], KeyC: [0, -1, 0],
};

export class Walker {
    constructor(camera, canvas, unit) {
        this.camera = camera;
        this.unit = unit;
        this.keys = new Set();
        this.last = null;
        camera.rotation.order = "YXZ";
        addEventListener("keydown", (event) => { if (!event.ctrlKey && !event.metaKey) this.keys.add(event.code); });
        addEventListener("keyup", (event) => this.keys.delete(event.code));
        addEventListener("blur", () => this.keys.clear());
        canvas.addEventListener("pointerdown", (event) => canvas.setPointerCapture(event.pointerId));
        canvas.addEventListener("pointermove", (event) => {
            if (canvas.hasPointerCapture(event.pointerId)) this.turn(event.movementX, event.movementY);
        });
    }

    turn(x, y) {
        this.camera.rotation.y -= x * LOOK;
        this.camera.rotation.x = Math.min(1.55, Math.max(-1.55, this.camera.rotation.x - y * LOOK));
    }

    // Angle 0 looks along the level's x axis, and grows to the left.
    standAt(point, angle, tilt = 0) {
        this.camera.position.copy(point).add(new Vector3(0, 24 * this.unit, 0));
        this.camera.rotation.set(tilt, angle - Math.PI / 2, 0);
    }

    // Goes near a point, from the side that one looks from now, and looks at it.
    lookAt(point) {
        const back = this.camera.getWorldDirection(new Vector3()).setY(0);
        if (back.lengthSq() < 1e-6) back.set(1, 0, 0);
        this.camera.position.copy(point).addScaledVector(back.normalize(), -60 * this.unit).y += 20 * this.unit;
        this.camera.lookAt(point);
        this.camera.rotation.z = 0;
    }

    overlook(level) {
        const box = new Box3().setFromObject(level);
        const size = box.getSize(new Vector3()).length() || 1;
        const centre = box.getCenter(new Vector3());
        this.camera.position.copy(centre).add(new Vector3(0.2, 0.6, 0.6).multiplyScalar(size));
        this.camera.lookAt(centre);
    }

    step(time) {
        const seconds = this.last === null ? 0 : Math.min(0.1, (time - this.last) / 1000);
        this.last = time;
        const way = new Vector3();
        for (const key of this.keys) if (STEPS[key]) way.add(new Vector3(...STEPS[key]));
        const isRunning = this.keys.has("ShiftLeft") || this.keys.has("ShiftRight");
        way.applyQuaternion(this.camera.quaternion);
        this.camera.position.addScaledVector(way, SPEED * (isRunning ? RUN : 1) * this.unit * seconds);
    }
}
